"""Runs the lines of Python in a document and compares what they print with what they say: `print(...)  # text`.

    python readme.py DOCUMENT
"""
import contextlib
import io
import pathlib
import re
import sys


def main(document: str) -> int:
    text = pathlib.Path(document).read_text(encoding="utf-8")
    lines = re.search(r"((?:^    .*\n|^\n)*^    import qscontainers as qs\n(?:^    .*\n|^\n)*)", text, re.M)[1]
    code = "\n".join(line[4:] for line in lines.splitlines())
    printed = io.StringIO()
    with contextlib.redirect_stdout(printed):
        exec(code, {})
    said = re.findall(r"print\(.*\) +# (.*)", code)
    wrong = [(a, b) for a, b in zip(printed.getvalue().splitlines(), said) if a != b]
    print(printed.getvalue(), end="")
    for line, expected in wrong:
        print(f"not {expected!r} but {line!r}", file=sys.stderr)
    return bool(wrong) or len(said) < 5 or len(printed.getvalue().splitlines()) != len(said)


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
