#!/usr/bin/env python3
"""Checks that the workbench's includes point only downward through its layers.

Usage: check-layers.py ROOT     check the tree at ROOT, exit 1 on a violation
       check-layers.py --self-test

The layers are those of the README's layout table. A file in src/<folder>
may include headers of its own layer and of the layers below. The archive
(archive/) may include, of the workbench, only src/contracts. Nothing in src/
or archive/ includes the host, the stand-in or the tests, which sit above
everything. Includes are resolved by file name, the way the build's include
paths resolve them: first the including file's own folder, then every header
of the tree.
"""

import os
import re
import sys
import tempfile

# Folder below src/ -> layer, from the bottom.
LAYERS = {
    "contracts": 0,
    "core": 1,
    "widgets": 2, "connection": 2, "transfer": 2,
    "dnd": 3, "rights": 3,
    "board": 4,
    "tabs": 5,
    "plugin": 6,
}
CHECKED = ("src", "archive")
ABOVE = ("host", "connectionmanager", "tests", "bench")
SOURCE_SUFFIXES = (".h", ".cpp")
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]')


def area_of(relpath):
    """'src/board/x.h' -> 'src/board', 'archive/x.h' -> 'archive', 'host/x.h' -> 'host'."""
    parts = relpath.split("/")
    if parts[0] == "src":
        return "src/" + parts[1] if len(parts) > 2 else "src"
    return parts[0]


def headers(root):
    """Every header of the tree that an include could name, as relative paths."""
    found = []
    for top in CHECKED + ABOVE:
        for folder, dirs, files in os.walk(os.path.join(root, top)):
            dirs[:] = [d for d in dirs if d not in ("build", "node_modules")]
            for name in files:
                if name.endswith(".h"):
                    found.append(os.path.relpath(os.path.join(folder, name), root).replace(os.sep, "/"))
    return found


def resolve(include, source, by_name, root):
    """The tree's header an include names, or None for a header of Qt or the system."""
    own = os.path.join(os.path.dirname(source), include).replace(os.sep, "/")
    if os.path.isfile(os.path.join(root, own)):
        return os.path.normpath(own).replace(os.sep, "/")
    candidates = [h for h in by_name.get(os.path.basename(include), []) if h.endswith("/" + include)]
    return candidates[0] if len(candidates) == 1 else (candidates or None)


def violation(source_area, target_area):
    """Why an include from source_area of target_area breaks the rule, or None."""
    if source_area == target_area:
        return None
    if target_area in ABOVE:
        return "%s sits above everything" % target_area
    if source_area == "archive":
        if target_area != "src/contracts":
            return "the archive includes only src/contracts of the workbench"
        return None
    if target_area == "archive":
        return "the workbench does not include the archive"
    source_layer = LAYERS[source_area[len("src/"):]]
    target_layer = LAYERS[target_area[len("src/"):]]
    if target_layer > source_layer:
        return "%s (layer %d) is above %s (layer %d)" % (target_area, target_layer, source_area, source_layer)
    return None


def check(root):
    """The list of error lines for the tree at root."""
    errors = []
    by_name = {}
    for header in headers(root):
        by_name.setdefault(os.path.basename(header), []).append(header)
    src = os.path.join(root, "src")
    for name in sorted(os.listdir(src)) if os.path.isdir(src) else []:
        if os.path.isdir(os.path.join(src, name)) and name not in LAYERS:
            errors.append("src/%s: a folder without a layer; add it to LAYERS in %s and to the "
                          "README's layout table" % (name, os.path.basename(__file__)))
    for top in CHECKED:
        for folder, dirs, files in os.walk(os.path.join(root, top)):
            dirs.sort()
            for name in sorted(files):
                if not name.endswith(SOURCE_SUFFIXES):
                    continue
                source = os.path.relpath(os.path.join(folder, name), root).replace(os.sep, "/")
                source_area = area_of(source)
                if source_area == "src" or (source_area.startswith("src/")
                                            and source_area[len("src/"):] not in LAYERS):
                    continue  # reported above as a folder, or a file beside the folders
                with open(os.path.join(root, source), encoding="utf-8", errors="replace") as text:
                    for number, line in enumerate(text, 1):
                        match = INCLUDE.match(line)
                        if not match:
                            continue
                        include = match.group(1)
                        target = resolve(include, source, by_name, root)
                        if target is None:
                            continue
                        if isinstance(target, list):
                            errors.append("%s:%d: includes \"%s\", which names several headers: %s"
                                          % (source, number, include, ", ".join(target)))
                            continue
                        reason = violation(source_area, area_of(target))
                        if reason:
                            errors.append("%s:%d: includes \"%s\" (%s): %s"
                                          % (source, number, include, target, reason))
    cmake = os.path.join(root, "archive", "CMakeLists.txt")
    if os.path.isfile(cmake):
        with open(cmake, encoding="utf-8") as text:
            for number, line in enumerate(text, 1):
                code = line.split("#", 1)[0]
                if re.search(r"\borvexworkbench\b", code) or re.search(r"src/(?!contracts\b)", code):
                    errors.append("archive/CMakeLists.txt:%d: the archive links and includes only "
                                  "src/contracts (orvexcontracts) of the workbench: %s"
                                  % (number, line.strip()))
    return errors


def self_test():
    """Runs check() on small trees with and without violations."""
    cases = [
        # (files {path: text}, expected error fragments; empty: no error)
        ({"src/board/a.cpp": '#include "b.h"\n', "src/dnd/b.h": ""}, []),
        ({"src/widgets/a.cpp": '#include "b.h"\n', "src/transfer/b.h": ""}, []),
        ({"src/dnd/a.cpp": '#include <QObject>\n#include "b.h"\n', "src/board/b.h": ""},
         ['src/dnd/a.cpp:2: includes "b.h" (src/board/b.h): src/board (layer 4) is above src/dnd (layer 3)']),
        ({"src/contracts/a.h": '#include "b.h"\n', "src/core/b.h": ""},
         ["src/contracts/a.h:1: includes"]),
        ({"archive/a.cpp": '#include "b.h"\n#include "c.h"\n', "src/contracts/b.h": "", "src/core/c.h": ""},
         ['archive/a.cpp:2: includes "c.h" (src/core/c.h): the archive includes only src/contracts']),
        ({"src/core/a.cpp": '#include "b.h"\n', "archive/b.h": ""}, ["the workbench does not include the archive"]),
        ({"src/plugin/a.cpp": '#include "b.h"\n', "host/b.h": ""}, ["host sits above everything"]),
        ({"src/extra/a.h": ""}, ["src/extra: a folder without a layer"]),
        ({"src/board/a.cpp": '#include "b.h"\n', "src/core/b.h": "", "src/tabs/b.h": ""},
         ['names several headers']),
        ({"archive/CMakeLists.txt": "target_link_libraries(x PUBLIC orvexworkbench)\n"},
         ["archive/CMakeLists.txt:1: the archive links"]),
        ({"archive/CMakeLists.txt": "target_link_libraries(x PUBLIC orvexcontracts) # not orvexworkbench\n"}, []),
    ]
    failures = 0
    for files, expected in cases:
        with tempfile.TemporaryDirectory() as root:
            for path, text in files.items():
                os.makedirs(os.path.dirname(os.path.join(root, path)), exist_ok=True)
                with open(os.path.join(root, path), "w", encoding="utf-8") as out:
                    out.write(text)
            errors = check(root)
            ok = len(errors) == len(expected) and all(
                any(fragment in error for error in errors) for fragment in expected)
            if not ok:
                failures += 1
                print("FAIL: %s\n  expected %s\n  got      %s" % (sorted(files), expected, errors))
    print("%d passed, %d failed" % (len(cases) - failures, failures))
    return 1 if failures else 0


def main():
    if sys.argv[1:] == ["--self-test"]:
        return self_test()
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    errors = check(sys.argv[1])
    for error in errors:
        print(error)
    if errors:
        print("%d include(s) break the layer rule of the README's layout table." % len(errors))
        return 1
    print("Every include points downward.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
