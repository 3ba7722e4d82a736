"""Prints a deb822 file with a deb-src entry for each Debian archive of this machine's apt sources.

scripts/setup hands it to a private apt run, so that a source package can be fetched from the mirror and with the keys
that the machine already trusts, while its own sources stay as they are. Both formats of apt are read. Ends with 1 if
no entry for the machine's own release is found.
"""

import glob
import re
import sys


def os_codename():
    with open("/etc/os-release", encoding="utf-8") as release:
        match = re.search(r'^VERSION_CODENAME="?([^"\n]*)', release.read(), re.M)
    return match.group(1) if match else ""


def read(path):
    try:
        with open(path, encoding="utf-8") as file:
            return file.read()
    except OSError:
        return ""


def deb822_entries():
    """(uris, suites, components, signer) of each enabled stanza of the *.sources files."""
    for path in sorted(glob.glob("/etc/apt/sources.list.d/*.sources")):
        text = re.sub(r"^#.*\n", "", read(path), flags=re.M)
        for stanza in re.split(r"\n\s*\n", text):
            fields = {}
            for key, value in re.findall(r"^([A-Za-z-]+):[ \t]*(.*(?:\n[ \t]+.*)*)", stanza, re.M):
                fields[key.lower()] = value.strip()
            if fields.get("enabled", "yes") != "no" and "deb" in fields.get("types", "").split():
                yield (fields.get("uris", "").split(), fields.get("suites", "").split(),
                       fields.get("components", "").split(), fields.get("signed-by", ""))


def one_line_entries():
    """The same of the one-line files: deb [options] uri suite component..."""
    for path in ["/etc/apt/sources.list"] + sorted(glob.glob("/etc/apt/sources.list.d/*.list")):
        for line in read(path).splitlines():
            match = re.match(r"\s*deb\s+(?:\[([^\]]*)\]\s+)?(\S+)\s+(\S+)\s+([^#]*)", line)
            if match:
                signer = re.search(r"signed-by=(\S+)", match.group(1) or "")
                yield ([match.group(2)], [match.group(3)], match.group(4).split(),
                       signer.group(1) if signer else "")


def main():
    codename = os_codename()
    found = False
    for uris, suites, components, signer in list(deb822_entries()) + list(one_line_entries()):
        # The release itself is enough; its update suites may lag and hold nothing that is needed here.
        if codename not in suites or "main" not in components:
            continue
        found = True
        print("Types: deb-src")
        print("URIs: " + " ".join(uris))
        print("Suites: " + codename)
        print("Components: main")
        if signer:
            print("Signed-By: " + signer.replace("\n", "\n "))
        print()
    return 0 if found else 1


sys.exit(main())
