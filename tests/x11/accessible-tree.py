#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
# Prints what assistive technologies see of one running application: one
# line per accessible object, indented by depth, as
#     role 'name' [text]
# (the text only for objects that have one). Debian's python3-pyatspi.
#
#   accessible-tree.py APPLICATION [--showing]
#
# --showing leaves out what is not on the screen (hidden windows, pages of a
# stack behind the current one). Exit status 1 when no such application is
# on the accessibility bus.
import sys

import pyatspi


def text_of(accessible):
    try:
        text = accessible.queryText()
    except NotImplementedError:
        return ""
    return text.getText(0, -1)


def dump(accessible, depth, showing_only):
    if showing_only and not accessible.getState().contains(pyatspi.STATE_SHOWING):
        return
    line = "%s%s '%s'" % ("  " * depth, accessible.getRoleName(), accessible.name or "")
    text = text_of(accessible)
    if text:
        line += " [%s]" % text
    print(line)
    for child in accessible:
        if child is not None:
            dump(child, depth + 1, showing_only)


def main():
    args = [a for a in sys.argv[1:] if not a.startswith("--")]
    if len(args) != 1:
        print("usage: accessible-tree.py APPLICATION [--showing]", file=sys.stderr)
        return 2
    showing_only = "--showing" in sys.argv
    desktop = pyatspi.Registry.getDesktop(0)
    found = False
    for application in desktop:
        if application is not None and (application.name or "").lower() == args[0].lower():
            found = True
            print("application '%s'" % application.name)
            for window in application:
                if window is not None:
                    dump(window, 1, showing_only)
    return 0 if found else 1


if __name__ == "__main__":
    sys.exit(main())
