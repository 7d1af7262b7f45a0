#!/usr/bin/env python3
"""Tells which members of namespaces and files have no documentation: Doxygen warns of those of classes and of
documented namespaces only.
usage: undocumented.py DIRECTORY_OF_DOXYGENS_XML"""
import glob
import os
import sys
import xml.etree.ElementTree as ElementTree


def undocumented(path):
    for member in ElementTree.parse(path).iter("memberdef"):
        texts = (member.find(name) for name in ("briefdescription", "detaileddescription"))
        if not any("".join(text.itertext()).strip() for text in texts if text is not None):
            place = member.find("location")
            yield f"{place.get('file')}:{place.get('line')}: {member.findtext('name')} is not documented"


def main():
    pages = [path for name in ("namespace*.xml", "*_8h.xml") for path in glob.glob(os.path.join(sys.argv[1], name))]
    if not pages:
        sys.exit(f"{sys.argv[1]} holds no pages")
    found = sorted({what for path in pages for what in undocumented(path)})
    if found:
        sys.exit("\n".join(found))


main()
