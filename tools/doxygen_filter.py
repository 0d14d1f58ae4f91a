#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Doxygen's input filter: the headers' plain comments become documentation comments.

A comment on lines of its own documents what follows, the first one of a file the file; a comment
behind code documents that code. Their text is plain, so what Doxygen would read as a command or as
markup is escaped.
"""

import re
import sys


def plain(text):
    return re.sub(r'([\\@&$#<>%"])', r"\\\1", text)


def documented(source):
    files = 0

    def replace(match):
        nonlocal files
        code, text = match.group(1), match.group(2)
        if "SPDX-License-Identifier" in text:
            return code
        lines = [plain(re.sub(r"^ *\* ?", "", line)) for line in text.split("\n")]
        start = "/**< " if code.strip() else "/** "
        if not code.strip():
            files += 1
            start += "@file\n" if files == 1 else ""
        return code + start + "\n".join(lines) + "*/"

    return re.sub(r"^([^\n]*?)/\*(.*?)\*/", replace, source, flags=re.S | re.M)


sys.stdout.write(documented(open(sys.argv[1], encoding="utf-8").read()))
