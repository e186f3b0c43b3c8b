"""The small changes that can be made to a source, of the kind that a misunderstanding or a careless refactoring
introduces."""

import re

# A pattern and what each match becomes.
OPERATORS = [
    (r"==", "!="),
    (r"!=", "=="),
    (r"&&", "||"),
    (r"\|\|", "&&"),
    (r"(?<=\w) < (?=\w)", " <= "),
    (r" <= ", " < "),
    (r" >= ", " > "),
    (r"(?<=\w) > (?=\d)", " >= "),
    (r"(?<=\w) > (?=\w)", " < "),
    (r"(?<=[\w)]) \+ (?=[\w(])", " - "),
    (r"(?<=[\w)]) - (?=[\w(])", " + "),
    (r"\+\+(?=\w)", "--"),
    (r"--(?=\w)", "++"),
    (r"(?<=[(\s])!(?=\w)", ""),
    (r"\btrue\b", "false"),
    (r"\bfalse\b", "true"),
    # Not the third field of a pollfd, which poll writes.
    (r"(?<!POLLIN, )(?<!POLLRDHUP, )(?<![\w.\"])(\d+)(?![\w\".])", lambda m: str(int(m[1], 8 if m[1][0] == "0" else 10) + 1)),
    (r" \| [A-Z]\w+", ""),
    (r"\b[A-Z]\w+ \| (?=[A-Z])", ""),
    (r"\bRTLD_LAZY\b", "RTLD_NOW"),
    (r"\bstrncasecmp\b", "strncmp"),
    (r"std::strncmp", "::strncasecmp"),
    (r"\bstrrchr\b", "strchr"),
    (r" & mask", " | mask"),
    (r"\bstd::min\b", "std::max"),
    (r"\bstd::max\b", "std::min"),
    (r"\bcontinue;", "break;"),
    (r"\bSIGKILL\b", "SIGTERM"),
    (r"\bSIGTERM\b", "SIGHUP"),
    (r"\? ([^?:]+) : ([^?:;]+);", r"? \2 : \1;"),
    (r"std::exchange\((\w+), nullptr\)", r"\1"),
    (r'"([^"]+)"', lambda m: '"' + m[1][:-1] + '~"'),
]


def changes_of_line(line):
    code = re.split(r"\s*//", line)[0]
    for pattern, replacement in OPERATORS:
        for match in re.finditer(pattern, code):
            new = replacement(match) if callable(replacement) else match.expand(replacement)
            yield line[: match.start()] + new + line[match.end() :]
    statement = code.strip()
    if re.fullmatch(r"[^{}]*\(.*\);", statement) and not re.match(r"(const|auto|char|void\*|return)\b", statement):
        yield re.sub(r"\S.*", ";", code)  # a call removed
    elif re.fullmatch(r"[\w.\[\]>*-]+ [|&+-]?= [^{}]*;", statement):
        yield re.sub(r"\S.*", ";", code)  # an assignment removed
    guarded = re.fullmatch(r"(\s*)if \(.*\) (return|throw|continue|break).*;", code)
    if guarded:
        yield guarded[1] + ";"  # an early way out removed


def is_statement(line):
    return bool(re.fullmatch(r"\s+[^{}/#]*;", line)) and "case" not in line


def is_declaration(line, class_name):
    """Whether the line declares a function or a constant whose place among its neighbours does not matter."""
    name = rf"(explicit )?(~?{class_name}|(?!return|throw|delete|virtual)[\w:<>,&* ]+[ &*][\w~=]+)"
    return bool(re.fullmatch(rf"\s+({name}\(.*\)[\w =]*|static constexpr .*);", line))


def changes_of_text(text, is_header):
    """Pairs of a description, whose line number starts it, and the changed text."""
    lines = text.splitlines()
    depth = 0
    class_name = ""
    for index, line in enumerate(lines):

        def change(description, *replacement):
            changed = lines[:index] + list(replacement) + lines[index + len(replacement) :]
            return f"{index + 1}: {line.strip()} -> {description}", "\n".join(changed) + "\n"

        if line.strip() and not line.lstrip().startswith(("//", "#", "static_assert(")):
            for changed in changes_of_line(line):
                if changed != line:
                    yield change(changed.strip(), changed)
            following = lines[index + 1] if index + 1 < len(lines) else ""
            are_declarations = is_header and all(is_declaration(each, class_name) for each in (line, following))
            are_declarations |= following.endswith(" = delete;")
            if depth > 0 and is_statement(line) and is_statement(following) and not are_declarations:
                yield change("swapped with the next line", following, line)
        if declaration := re.match(r"\s*(?:class|struct) (\w+)", line):
            class_name = declaration[1]
        depth += line.count("{") - line.count("}")
