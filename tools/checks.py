"""What the check programs share: the files of the clone, their includes, and how findings are shown."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# The rooms of the tree that make up the product. image/primitives stands before image: the first that fits counts.
ROOMS = ("contract", "image/primitives", "image", "effects", "library", "platform", "host")

INCLUDE = re.compile(r'^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)', re.MULTILINE)


def files(*patterns):
    """The tracked and the new, not ignored, files that fit one of the git patterns, sorted."""
    command = ["git", "ls-files", "-z", "-co", "--exclude-standard", "--", *patterns]
    listed = subprocess.run(command, cwd=ROOT, check=True, stdout=subprocess.PIPE).stdout.decode()
    return sorted(name for name in set(listed.split("\0")) if name and (ROOT / name).is_file())


def cpp_files():
    return files("*.h", "*.cpp")


def text(name):
    return (ROOT / name).read_text(encoding="utf-8", errors="replace")


def room(name):
    """The room that a file stands in, or its first folder when that is no room of the product."""
    return next((r for r in ROOMS if name.startswith(r + "/")), name.split("/")[0])


def includes(name):
    """(line, quoted name or None, bracketed name or None) for each include of a file."""
    body = text(name)
    return [(body.count("\n", 0, m.start(m.lastindex)) + 1, m[1], m[2]) for m in INCLUDE.finditer(body)]


def everything_behind(name, seen=None):
    """The file and all files of the clone that it includes, straight or not."""
    seen = set() if seen is None else seen
    if name not in seen:
        seen.add(name)
        for _, quoted, _ in includes(name):
            if quoted and (ROOT / quoted).is_file():
                everything_behind(quoted, seen)
    return seen


def without_comments(body):
    """C++ text with its comments blanked out, lines kept."""
    return re.sub(r"//[^\n]*|/\*.*?\*/", lambda m: "\n" * m[0].count("\n"), body, flags=re.DOTALL)


def report(findings, what):
    """Prints the findings (path, line, message), or that there are none; gives the exit code."""
    for path, line, message in findings:
        print(f"{path}:{line}: {message}")
    program = pathlib.Path(sys.argv[0]).name
    print(f"{program}: {what}, {len(findings)} findings")
    return 1 if findings else 0
