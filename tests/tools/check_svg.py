#!/usr/bin/env python3
"""Checks that an SVG file is well-formed XML with the expected curves.

Usage: check_svg.py FILE LABEL...  Every LABEL must name a <polyline class="curve"> with at
least two points inside the plot. Prints one line per problem and exits 1 if there is any.
"""
import sys
import xml.etree.ElementTree as ET

NS = "{http://www.w3.org/2000/svg}"


def main(argv):
    path, labels = argv[1], argv[2:]
    try:
        root = ET.parse(path).getroot()
    except (ET.ParseError, OSError) as e:
        print(f"{path}: not well-formed XML: {e}")
        return 1
    problems = []
    if root.tag != NS + "svg":
        problems.append(f"root element is {root.tag}, not svg")
    width, height = float(root.get("width")), float(root.get("height"))
    curves = {}
    for pl in root.iter(NS + "polyline"):
        if pl.get("class") != "curve":
            continue
        points = [p.split(",") for p in pl.get("points", "").split()]
        curves.setdefault(pl.get("data-label"), []).extend(points)
    for label in labels:
        pts = curves.get(label)
        if not pts or len(pts) < 2:
            problems.append(f"no curve labelled {label!r} (have {sorted(curves)})")
            continue
        inside = [p for p in pts if 0 <= float(p[0]) <= width and 0 <= float(p[1]) <= height]
        if len(inside) < 2:
            problems.append(f"curve {label!r} has no points inside the picture")
    texts = [t.text for t in root.iter(NS + "text") if t.text]
    if not texts:
        problems.append("no text: axes and legend are missing")
    for p in problems:
        print(f"{path}: {p}")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
