"""Walks the windows of one application with pyatspi, within the program's bounds, for the things that the program reads."""

import sys

import pyatspi

MAX_DEPTH, MAX_CHILDREN = 8, 50


def walk(element: pyatspi.Accessible, depth: int = 0) -> int:
    """How many elements there are."""
    element.getRole(), element.name, element.description
    try:
        element.queryText().getText(0, -1)
    except NotImplementedError:
        pass
    try:
        element.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    except NotImplementedError:
        pass
    if depth == MAX_DEPTH:
        return 1
    children = (element.getChildAtIndex(index) for index in range(min(element.childCount, MAX_CHILDREN)))
    return 1 + sum(walk(child, depth + 1) for child in children if child is not None)


for application in pyatspi.Registry.getDesktop(0):
    if application is not None and application.name == sys.argv[1]:
        print(sum(walk(window) for window in application))
