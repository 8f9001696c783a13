"""Holds the pages about errors and properties against the tables in the source, and links and names of tests against
what they lead to.

usage: pages.py SOURCE_TREE
"""
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
trouble = []


def codes_by_name():
    header = (root / "src/backend/error_codes.h").read_text()
    pairs = re.findall(r"constexpr std::int64_t (k\w+) =\s*(-?\d+);", header)
    return {name: int(code) for name, code in pairs}


def sentences_in_source(codes):
    header = (root / "src/bridge/error_messages.h").read_text()
    table = header[header.index("kErrorMessages[] = {") :]
    table = table[: table.index("\n};")]
    rows = {}
    for key, parts in re.findall(r'\{(\w+),\s*((?:"[^"]*"\s*)+)\}', table):
        rows[0 if key == "0" else codes[key]] = "".join(re.findall(r'"([^"]*)"', parts))
    return rows


def rows_of(section):
    return {int(row[0]): row[1] for row in re.findall(r"^\| (-?\d+) \| (.*?) \|", section, re.M)}


def codes_that_are_set(codes):
    """Those that a source file names; tables and the list of codes itself set nothing."""
    text = "".join(path.read_text() for path in (root / "src").rglob("*.cpp"))
    return {code for name, code in codes.items() if re.search(rf"\b{name}\b", text)}


def check_errors():
    codes = codes_by_name()
    source = sentences_in_source(codes)
    page = (root / "docs/errors.md").read_text()
    given, kept = page.split("## Codes that this version does not give")
    given, kept = rows_of(given), rows_of(kept)
    both = given | kept
    if len(source) < 80 or len(codes) < 80:
        trouble.append("the source's tables of codes could not be read")
    for code in sorted(source.keys() | both.keys()):
        if source.get(code) != both.get(code):
            trouble.append(f"docs/errors.md: {code}: the source says {source.get(code)!r}, the page {both.get(code)!r}")
    for code in sorted(given.keys() & kept.keys()):
        trouble.append(f"docs/errors.md: {code} stands in both tables")
    # Set by methods that no call reaches with these arguments: the functions look at them before.
    before_the_back_end = {9050, 9075}
    are_set = (codes_that_are_set(codes) & source.keys()) - before_the_back_end
    for code in sorted(are_set ^ given.keys()):
        where = "does not give" if code in are_set else "gives"
        trouble.append(f"docs/errors.md: {code} stands among the codes that this version {where}")


def check_properties():
    page = (root / "docs/properties.md").read_text()
    named = set(re.findall(r"`(\w+)`", page)) | set(re.findall(r'^\| "(\w+)" \|', page, re.M))
    words = set()
    for path in (root / "src/backend").rglob("*.cpp"):
        for name, table in re.findall(r"Property[GS]etter<[^\n]* (k\w+)\[\] = \{(.*?)\n\};", path.read_text(), re.S):
            if name == "kNumberGetters":  # of attendees, for callers other than the functions
                continue
            words |= set(re.findall(r'^    \{"(\w+)"', table, re.M))
    if len(words) < 40:
        trouble.append(f"only {len(words)} properties were found in src/backend")
    for word in sorted(words - named):
        trouble.append(f"docs/properties.md does not name {word}")


def anchors_of(page):
    """Those that a repository's view and the site give to headings."""
    headings = re.findall(r"^#+ (.*)$", re.sub(r"^```.*?^```$", "", page.read_text(), flags=re.M | re.S), re.M)
    return {re.sub(r"[^\w\- ]", "", heading.strip().lower()).replace(" ", "-") for heading in headings}


def check_links():
    pages = [*(root / "docs").rglob("*.md"), *root.glob("*.md")]
    for page in pages:
        text = re.sub(r"^```.*?^```$|`[^`\n]*`", "", page.read_text(), flags=re.M | re.S)
        for target, anchor in re.findall(r"\]\(([^)#:]*)(?:#([^)]*))?\)", text):
            leads_to = (page.parent / target).resolve() if target else page
            if not leads_to.exists():
                trouble.append(f"{page.relative_to(root)}: {target} is not there")
            elif anchor and anchor not in anchors_of(leads_to):
                trouble.append(f"{page.relative_to(root)}: {target} has no heading #{anchor}")
    for index in (root / "docs/README.md", root / "docs/decisions/README.md"):
        for page in index.parent.glob("*.md"):
            if page != index and f"]({page.name})" not in index.read_text():
                trouble.append(f"{index.relative_to(root)} does not list {page.name}")


def check_tests():
    """Tests that pages name as `Suite.Name` are there; a page that promises something is believed for its test."""
    known = set()
    for path in (root / "tests").rglob("*.cpp"):
        known |= {".".join(found) for found in re.findall(r"^(?:TYPED_)?TEST(?:_F|_P)?\((\w+),\s*(\w+)\)", path.read_text(), re.M)}
    for page in [*(root / "docs").rglob("*.md"), *root.glob("*.md")]:
        for name in re.findall(r"`([A-Z][a-z]\w*\.[A-Z][a-z]?\w*)`", page.read_text()):
            if name not in known:
                trouble.append(f"{page.relative_to(root)}: there is no test {name}")


check_errors()
check_properties()
check_tests()
check_links()
for line in trouble:
    print(line)
sys.exit(1 if trouble else 0)
