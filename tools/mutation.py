"""The small faults that tools/mutate makes: one changed place of one line each."""

import re

COMPARE = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "=="}
SIGN = {"+": "-", "-": "+", "+=": "-=", "-=": "+="}
LOGIC = {"&&": "||", "||": "&&"}
SHIFT = {"<<": ">>", ">>": "<<", "<<=": ">>=", ">>=": "<<="}
TWINS = {"width": "height", "height": "width", "Width": "Height", "Height": "Width"}

BINARY = re.compile(r"(?<= )(<=|>=|<<=|>>=|==|!=|&&|\|\||<<|>>|\+=|-=|[<>+-])(?= )")
INTEGER = re.compile(r"(?<![\w.'])(\d+)(?![\w.'])")
SIZE = re.compile(r"(?<![A-Za-z_])(?:[a-z]\w*?)?(width|height|Width|Height)(?![a-z])")
LESSER = re.compile(r"\bstd::(min|max)\b|\b(Min|Max)(?=\()")
CLAMP = re.compile(r"\b(?:std::clamp|Clamp\w*)\(")
CLEAR = re.compile(r"^\s*(?:\w+(?:\.|->))*(?:std::|__builtin_)?(?:memset|fill|fill_n|Clear|ZeroRows|clear)\(.*;\s*$")
STRIDE = re.compile(r"\b(\w+)(\.|->)(GetStride\(\)|stride)")
RETURN = re.compile(r"^(\s*)return\b[^{};]*;\s*$")
GUARD = re.compile(r"^\s*(?:} else )?if (?:constexpr )?\(.*\)\s*$|^\s*\|\| .*\)\s*$|^\s*&& .*\)\s*$")


def blanked(body):
    """The text with comments and literals of text blanked out, places kept."""
    return re.sub(r"//[^\n]*|/\*.*?\*/|\"(?:\\.|[^\"\\\n])*\"|(?<!\w)'(?:\\.|[^'\\\n])+'",
                  lambda m: re.sub(r"[^\n]", " ", m[0]), body, flags=re.DOTALL)


def closing(line, opening):
    """Where the bracket that opens at this place is closed, or -1."""
    depth = 0
    for place in range(opening, len(line)):
        depth += (line[place] in "([{") - (line[place] in ")]}")
        if depth == 0:
            return place
    return -1


def first_argument(line, opening, end):
    depth = 0
    for place in range(opening + 1, end):
        depth += (line[place] in "([{<") - (line[place] in ")]}>")
        if line[place] == "," and depth == 0:
            return line[opening + 1:place]
    return line[opening + 1:end]


def changes(line, before):
    """(operator, first, last, replacement) for each place of a blanked line; `before` is the line above it."""
    for m in BINARY.finditer(line):
        for what, pairs in (("comparison", COMPARE), ("sign", SIGN), ("logic", LOGIC), ("shift", SHIFT)):
            if m[1] in pairs:
                yield what, m.start(1), m.end(1), pairs[m[1]]
    for m in INTEGER.finditer(line):
        yield "constant + 1", m.start(1), m.end(1), str(int(m[1]) + 1)
        if int(m[1]) > 0:
            yield "constant - 1", m.start(1), m.end(1), str(int(m[1]) - 1)
    for m in SIZE.finditer(line):
        yield "width and height", m.start(1), m.end(1), TWINS[m[1]]
    for m in LESSER.finditer(line):
        which = m[1] or m[2]
        other = {"min": "max", "max": "min", "Min": "Max", "Max": "Min"}[which]
        yield "min and max", m.end() - 3, m.end(), other
    for m in CLAMP.finditer(line):
        end = closing(line, m.end() - 1)
        if end > 0:
            yield "no clamp", m.start(), end + 1, f"({first_argument(line, m.end() - 1, end)})"
    if CLEAR.match(line):
        yield "no clear", len(line) - len(line.lstrip()), len(line.rstrip()), ";"
    for m in STRIDE.finditer(line):
        picture = m[1] + m[2]
        bytes_of = ("GetWidth()", "GetPixelBytes()") if "Get" in m[3] else ("width", "pixelBytes")
        yield "stride", m.start(), m.end(), f"({picture}{bytes_of[0]} * {picture}{bytes_of[1]})"
    m = RETURN.match(line)
    if m and GUARD.match(before):
        yield "no guard", len(m[1]), len(line.rstrip()), ";"


def candidates(name, body, covered):
    """The faults that can be made in the lines `covered` of a file, as records: file, line, operator, was, now."""
    lines = body.split("\n")
    bare = blanked(body).split("\n")
    found = []
    for number, (line, code) in enumerate(zip(lines, bare), 1):
        if number not in covered or code.lstrip().startswith(("#", "static_assert", "template", "case ")):
            continue
        before = bare[number - 2] if number > 1 else ""
        for operator, first, last, instead in changes(code, before):
            found.append({"file": name, "line": number, "operator": operator, "was": line,
                          "now": line[:first] + instead + line[last:]})
    return found
