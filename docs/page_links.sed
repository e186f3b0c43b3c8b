# The documents' links as the pages in build/docs/html need them. A header and a document have a page there
# (the latter without anchors); any other file is where it was, and an example's README in its folder.
s,(\]\((\.\./)?examples/[^)]*)/README\.md\),\1),g
s,\]\((\.\./)?include/rngaggregator/([a-z_]+\.h)\),](@ref \2),g
s,\]\((\.\./)?((examples|tests|tools)/[^)]*|LICENSE)\),](../../../\2),g
s,\]\(([^):]+\.md)#[^)]*\),](\1),g
