"""Checks rules for the sources that neither the compiler nor the linker enforces.

    python3 tests/house/house.py [FOLDER]

prints "file:line: what is wrong" for each violation, then the sizes that it counted. Exits with 1
if there was a violation.

Includes go in one direction: app, daemon -> display -> kiwi, decode, store -> base. Rooms on the
same level do not include each other.

The classes of the rooms stay small, in headers and in .cpp files. Each declaration with a parameter
list in the body of a class counts as a member function, including constructors, destructors,
operators, overloads and static functions, but not deleted functions, friends and Qt's macros. Each
declarator of the other declarations counts as a field, including std::function, but not types and
static members. Members of a nested class do not count for the outer one.

Libraries link only what their layer may use.

Documents name only existing files, with or without their extension.
"""
import pathlib
import re
import sys
from typing import NamedTuple

ROOMS_BELOW = {
    "base": set(),
    "kiwi": {"base"},
    "decode": {"base"},
    "store": {"base"},
    "display": {"kiwi", "decode", "store", "base"},
    "app": {"display", "kiwi", "decode", "store", "base"},
    "daemon": {"display", "kiwi", "decode", "store", "base"},
}
COUNTED_ROOMS = [*ROOMS_BELOW, "sim"]

MAX_FUNCTIONS = 25
WINDOW = "MainWindow"
WINDOW_HEADER = "app/mainwindow.h"
MAX_WINDOW_FUNCTIONS = 45
MAX_WINDOW_FIELDS = 16
MAX_WINDOW_HEADER_LINES = 119

LINKED = {
    "outpost_core": {"outpost_flags", "Qt5::Core"},
    "outpost_station": {"outpost_flags", "outpost_core", "Qt5::Core", "Qt5::Network",
                        "Qt5::WebSockets", "ws2_32"},
    "outpost_daemon": {"outpost_station"},
}

OTHER_DECLARATIONS = re.compile(r"(using|typedef|friend|static_assert)\b")


class Violation(NamedTuple):
    file: str
    line: int
    text: str

    def __str__(self):
        return f"{self.file}:{self.line}: {self.text}"


class ClassSize(NamedTuple):
    name: str
    file: str
    line: int
    functions: int
    fields: int


def line_at(text, position):
    return text.count("\n", 0, position) + 1


# ---- includes

def include_violations(file, source):
    room = file.split("/")[0]
    allowed = ROOMS_BELOW.get(room, set()) | {room}
    found = []
    for number, line in enumerate(source.splitlines(), 1):
        match = re.match(r'\s*#\s*include\s*"(([^"/]+)/[^"]+)"', line)
        if match and match[2] in ROOMS_BELOW and match[2] not in allowed:
            found.append(Violation(file, number, f"{room}/ includes {match[1]}"))
    return found


# ---- classes

NOT_CODE = re.compile(
    r"//[^\n]*|/\*.*?\*/"
    r'|R"([^()\\\s]*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"'
    r"|(?<!\w)'(?:\\.|[^'\\\n])+'"  # no digit separator
    r"|^[ \t]*#(?:\\\n|[^\n])*", re.DOTALL | re.MULTILINE)

CLASS = re.compile(r"(?<!enum )\b(?:class|struct|union)\s+([\w:]+)(?:\s+final)?"
                   r"\s*(?::[^;{()]*)?\{")


def code_of(source):
    """Removes comments, strings and preprocessor lines, but keeps line breaks for line numbers."""
    return NOT_CODE.sub(lambda match: "\n" * match[0].count("\n"), source)


def block_end(code, opening):
    depth = 0
    for at in range(opening, len(code)):
        depth += {"{": 1, "}": -1}.get(code[at], 0)
        if depth == 0:
            return at
    return len(code)


def declarations(body):
    """The declarations of the class itself, without the contents of braces."""
    body = re.sub(r"\bQ_\w+\b(\s*\([^()]*\))?", "", body)
    body = re.sub(r"\b(public|protected|private)\s*:(?!:)", "", body)
    found, text, at, parentheses = [], "", 0, 0
    while at < len(body):
        char = body[at]
        parentheses += {"(": 1, ")": -1}.get(char, 0)
        if char == "{":
            at = block_end(body, at)
            char = "{}"
        if parentheses == 0 and (char == ";" or is_function_body(char, text, body[at + 1:])):
            found.append(text)
            text = ""
        else:
            text += char
        at += 1
    return [" ".join(text.split()) for text in found if text.strip()]


def is_function_body(char, text, rest):
    """Initializer braces are followed by a comma, a semicolon or the body."""
    return char == "{}" and is_function(text) and not re.match(r"\s*[,;{]", rest)


def without_template_arguments(text):
    longer = None
    while text != longer:
        text, longer = re.sub(r"<[^<>]*>", "", text), text
    return text


def is_function(text):
    if OTHER_DECLARATIONS.match(text.strip()):
        return False
    if re.search(r"\boperator\b", text):
        return True
    return re.match(r"[^={]*\(", without_template_arguments(text)) is not None


def field_count(text):
    if OTHER_DECLARATIONS.match(text) or re.match(r"(inline )?static\b", text):
        return 0
    text = re.sub(r"\([^()]*\)", "", without_template_arguments(text))
    text = re.sub(r"^(enum|class|struct|union)\b([^{=]*\{\}|[\w\s]*$)", "", text)
    return text.count(",") + 1 if text.strip() else 0


def class_sizes(file, source):
    code = code_of(source)
    sizes = []
    for match in CLASS.finditer(code):
        members = declarations(code[match.end():block_end(code, match.end() - 1)])
        functions = [text for text in members if is_function(text)]
        fields = [text for text in members if not is_function(text)]
        sizes.append(ClassSize(match[1].split("::")[-1], file, line_at(code, match.start()),
                               sum(not text.endswith("= delete") for text in functions),
                               sum(map(field_count, fields))))
    return sizes


def too_large(size):
    is_window = size.name == WINDOW
    bounds = [(size.functions, MAX_WINDOW_FUNCTIONS if is_window else MAX_FUNCTIONS,
               "member functions")]
    if is_window:
        bounds.append((size.fields, MAX_WINDOW_FIELDS, "fields"))
    return [Violation(size.file, size.line, f"{size.name} has {count} {what}, more than {bound}")
            for count, bound, what in bounds if count > bound]


def window_violations(sizes, header):
    found = []
    windows = sum(size.name == WINDOW for size in sizes)
    if windows != 1:
        found.append(Violation(WINDOW_HEADER, 1, f"{windows} classes are called {WINDOW}"))
    lines = len(header.splitlines())
    if lines > MAX_WINDOW_HEADER_LINES:
        found.append(Violation(WINDOW_HEADER, lines,
                               f"{lines} lines, more than {MAX_WINDOW_HEADER_LINES}"))
    return found


# ---- libraries

def link_violations(file, cmake):
    code = re.sub(r"#[^\n]*", "", cmake)
    found = []
    for match in re.finditer(r"target_link_libraries\s*\(\s*(\w+)([^)]*)\)", code):
        library, linked = match[1], set(match[2].split()) - {"PUBLIC", "PRIVATE", "INTERFACE"}
        for other in sorted(linked - LINKED.get(library, linked)):
            found.append(Violation(file, line_at(code, match.start()), f"{library} links {other}"))
    return found


def missing_libraries(cmake):
    return [Violation("CMakeLists.txt", 1, f"there is no library {name}") for name in LINKED
            if not re.search(rf"add_library\s*\(\s*{name}\b", cmake)]


# ---- documents

def document_violations(file, text, is_there):
    found = []
    folders = "|".join([*COUNTED_ROOMS, "bench", "cmake", "docs", "packaging", "tests"])
    for match in re.finditer(rf"`((?:{folders})/[\w./-]*)`", text):
        if not is_there(match[1]):
            found.append(Violation(file, line_at(text, match.start()), f"there is no {match[1]}"))
    return found


# ---- the tree

def texts(root, folders, patterns):
    for folder in folders:
        for pattern in patterns:
            for path in sorted((root / folder).glob(pattern)):
                yield path.relative_to(root).as_posix(), path.read_text(encoding="utf-8")


def check(root):
    """Returns the violations and, for information, the largest sizes."""
    found, sizes = [], []
    for file, source in texts(root, COUNTED_ROOMS, ["*.h", "*.cpp"]):
        sizes += class_sizes(file, source)
        if file.split("/")[0] in ROOMS_BELOW:
            found += include_violations(file, source)
    for size in sizes:
        found += too_large(size)
    header = (root / WINDOW_HEADER).read_text(encoding="utf-8")
    found += window_violations(sizes, header)

    cmakes = dict(texts(root, [".", "cmake", *COUNTED_ROOMS], ["CMakeLists.txt", "*.cmake"]))
    for file, cmake in cmakes.items():
        found += link_violations(file, cmake)
    found += missing_libraries("\n".join(cmakes.values()))
    for file, text in texts(root, [".", "docs"], ["*.md"]):
        found += document_violations(
            file, text, lambda name: (root / name).exists() or any(root.glob(f"{name}.*")))
    return found, largest(sizes, header)


def largest(sizes, header):
    lines = [f"{WINDOW}: {size.functions} member functions, {size.fields} fields, "
             f"{len(header.splitlines())} lines of header" for size in sizes if size.name == WINDOW]
    others = sorted((size for size in sizes if size.name != WINDOW),
                    key=lambda size: -size.functions)
    return lines + [f"{size.name}: {size.functions} member functions" for size in others[:5]]


def main():
    default = pathlib.Path(__file__).resolve().parents[2]
    found, sizes = check(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else default)
    for line in [*found, *sizes]:
        print(line)
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main())
