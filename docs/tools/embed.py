#!/usr/bin/env python3
"""Puts files into a page, each into the fenced block behind its mark `<!-- from PATH -->`.
usage: embed.py PAGE          writes the page as it should be to standard output"""
import os
import re
import sys

BLOCK = re.compile(r"(<!-- from (\S+) -->\n```\w+\n)(.*?)(```\n)", re.DOTALL)


def code(path):
    """The file without the comment that introduces it to those who read it there."""
    with open(path, encoding="utf-8") as file:
        return re.sub(r"\A(//.*\n)+", "", file.read())


def main():
    root = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
    with open(sys.argv[1], encoding="utf-8") as page:
        text = page.read()
    sys.stdout.write(BLOCK.sub(lambda found: found[1] + code(os.path.join(root, found[2])) + found[4], text))


main()
