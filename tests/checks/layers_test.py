#!/usr/bin/env python3
"""The layers check must be able to fail."""
import pathlib
import sys
import tempfile

sys.dont_write_bytecode = True
sys.path.insert(0, str(pathlib.Path(__file__).parent))
import layers  # noqa: E402


def found(files):
    with tempfile.TemporaryDirectory() as folder:
        root = pathlib.Path(folder)
        for name, text in files.items():
            path = root / name
            path.parent.mkdir(parents=True, exist_ok=True)
            path.write_text(text, encoding="utf-8")
        return [*layers.offences(root), *layers.circles(root)]


CASES = [
    ("an upward include", {"store/a.h": '#include "platform/text.h"\n', "platform/text.h": ""}, 1),
    ("a downward include", {"functions/a.cpp": '#include "bridge/frame.h"\n', "bridge/frame.h": ""}, 0),
    ("a library where only the standard is known", {"bridge/a.cpp": "#include <sqlite3.h>\n"}, 1),
    ("a library at the bottom", {"store/a.cpp": "#include <sqlite3.h>\n"}, 0),
    ("a folder that is no layer", {"elsewhere/a.cpp": ""}, 1),
    ("two headers that include each other", {"base/a.h": '#include "base/b.h"\n', "base/b.h": '#include "base/a.h"\n'}, 1),
    ("two headers that include a third", {"base/a.h": '#include "base/c.h"\n', "base/b.h": '#include "base/c.h"\n',
                                          "base/c.h": ""}, 0),
    ("a header that is nowhere", {"bridge/a.cpp": '#include "gone.h"\n'}, 1),
]

failed = [name for name, files, count in CASES if len(found(files)) != count]
print(f"layers check: {len(CASES) - len(failed)} of {len(CASES)} cases as expected", *failed)
sys.exit(1 if failed else 0)
