# For Doxygen, in the header for C: it would put these types and the C++ ones of the same names on one page.
/^\/\/\/ The part of a (settings object|provider) that all/,/^\};/d
/^\/\/\/ The result of `GetDefaultRng`/,/^\}/d
