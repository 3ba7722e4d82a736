#!/usr/bin/env python3
"""scripts/doc-comments.py DIRECTORY HEADER...

Writes copies of headers of vek into DIRECTORY, with their comments in the form that Doxygen reads; for scripts/docs. The lines
keep their numbers, so that Doxygen's warnings have the right ones.

  - A comment right in front of a declaration is about it, and about those that follow without a blank line.
  - A comment behind a declaration or an enumerator on the same line is about that.
  - The comment at the head is about the file, and about the class that it begins with ("vek::fs::Dir: ...") or that has
    the name of the file.
  - Any other comment stays a plain one.

The text is taken as it is: characters that mean something to Doxygen are escaped, except in backticks, in quotes and in
indented examples. Deleted and defaulted operations without a comment are left out: there is nothing to say about them.
"""
import os
import re
import sys

COMMENT = re.compile(r"^(\s*)//(?!/) ?(.*)$")
TRAILING = re.compile(r"^(\s*[^\s/\"][^\"]*[;,}\w])(\s+)// (.*)$")
CLASS_HEAD = re.compile(r"^(vek(?:::\w+)+): (.*)$")
NO_TEXT = re.compile(r"= (?:default|delete);\s*$")
NO_DECLARATION = re.compile(r"^\s*(#(?!define|if|else|endif)|public:|protected:|private:|namespace\b|\}|$)")


def escaped(block):
    """The lines of a comment for Doxygen. What is in quotes or backticks it leaves alone, and so do we."""
    has_list = any(re.match(r"\s*(-|\d+\.) ", line) for line in block)
    parts = re.split(r"(`[^`]*`|\"[^\"]*\")", "\n".join(block))
    for i in range(0, len(parts), 2):
        parts[i] = re.sub(r"([\\@<>#%&])", r"\\\1", parts[i])
    # Indented lines are examples or tables, except below a list.
    is_example = [line.startswith("    ") or line.startswith("  ") and not has_list for line in block]
    return ["    " + line if example else text for line, example, text in zip(block, is_example, "".join(parts).split("\n"))]


def code_of(line):
    """The line without strings, characters and comments."""
    return re.sub(r"//.*", "", re.sub(r"\"(?:\\.|[^\"\\])*\"|'(?:\\.|[^'\\])'", "", line))


def group_end(lines, first):
    """The last line of the declarations from `first` on that share a comment, or None if there is only one."""
    depth = declarations = 0
    last = None
    for number in range(first, len(lines)):
        line = lines[number]
        if depth == 0 and (not line.strip() or COMMENT.match(line) or NO_DECLARATION.match(line)):
            break
        if line.startswith("#"):
            if line.startswith("#define"):
                declarations += 1
            last = number
            continue
        code = code_of(line)
        depth += len(re.findall(r"[{(]", code)) - len(re.findall(r"[})]", code))
        if depth == 0 and re.search(r"[;}]\s*$", code):
            declarations += 1
            last = number
    return last if declarations > 1 else None


def converted(lines):
    result = list(lines)
    number = 0
    while number < len(lines):
        first = number
        while number < len(lines) and COMMENT.match(lines[number]):
            number += 1
        if first == number:
            number = convert_behind(lines, result, number)
        elif first > 0 and number < len(lines) and not NO_DECLARATION.match(lines[number]):
            convert_before(lines, result, first, number)
    return result


def convert_behind(lines, result, number):
    """The comment behind what line `number` declares, and its further lines. Returns the line behind them."""
    trailing = TRAILING.match(lines[number])
    if NO_TEXT.search(lines[number]) and not COMMENT.match(lines[number - 1]):
        result[number] = ""
    elif trailing:
        column = lines[number].index("// " + trailing[3])
        result[number] = f"{trailing[1]}{trailing[2]}///< {escaped([trailing[3]])[0]}"
        while number + 1 < len(lines) and lines[number + 1].startswith(" " * column + "// "):
            number += 1
            result[number] = f"{' ' * column}///< {escaped([lines[number][column + 3 :]])[0]}"
    return number + 1


def convert_before(lines, result, first, declaration):
    indents, texts = zip(*(COMMENT.match(line).groups() for line in lines[first:declaration]))
    for number, (indent, text) in enumerate(zip(indents, escaped(texts)), first):
        result[number] = f"{indent}/// {text}"
    end = group_end(lines, declaration)
    if end is not None:
        result[first] = re.sub(r"^(\s*)", r"\1/**@{*/", result[first], count=1)
        # Not behind a macro, which it would become a part of.
        result[end + 1 if not lines[end + 1] else end] += "/**@}*/"


def about_file(lines, path):
    """What the comment at the head says, to be put behind the last line."""
    head = []
    for line in lines:
        match = COMMENT.match(line)
        if not match:
            break
        head.append(match[2])
    if not head:
        return []
    named = CLASS_HEAD.match(head[0])
    if named:
        head[0] = named[2][0].upper() + named[2][1:]
    text = escaped(head)
    blocks = [f"/*! @file {path}", *text, "*/"]
    name = class_of(lines, named, path)
    if name:
        blocks += [f"/*! @class {name}", *text, "*/"]
    return blocks


def class_of(lines, named, path):
    """The class that the head of the file is about: the one that it begins with, or that has the name of the file."""
    text = "\n".join(lines)
    if named:
        name = named[1].rpartition("::")[2]
    else:
        name = "".join(word.capitalize() for word in re.search(r"(\w+)\.h$", path)[1].split("_"))
    if not re.search(rf"^(?:class|struct) (?:\w+ )?{name}\b[^;]*{{$", text, re.M):
        return None
    return re.search(r"^namespace ([\w:]+) {", text, re.M)[1] + "::" + name


def main(arguments):
    if len(arguments) < 2 or arguments[0] in ("-h", "--help"):
        print(__doc__.strip())
        return 0 if arguments[:1] in (["-h"], ["--help"]) else 2
    directory, *headers = arguments
    for header in headers:
        with open(header, encoding="utf-8") as file:
            lines = file.read().splitlines()
        copy = os.path.join(directory, header)
        os.makedirs(os.path.dirname(copy), exist_ok=True)
        with open(copy, "w", encoding="utf-8") as file:
            file.write("\n".join(converted(lines) + about_file(lines, header)) + "\n")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
