"""Makes the site: gathers the pages, writes the page of the commands from the program's own man pages, calls Sphinx.

usage: make.py ORLOCAL OUTPUT_FOLDER

The pages are those that docs/README.md lists, in its order and under its headings. One that it does not list, a link
that leads nowhere and whatever else Sphinx warns of ends with status 1.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile

root = pathlib.Path(__file__).resolve().parents[2]
# Pages that stand beside docs/, under the names that the site has for them.
BESIDE = ["CHANGELOG.md", "CONTRIBUTING.md", "SECURITY.md"]


def with_links(text, folder):
    """`docs/words.md`, as pages name each other, as a link; links to pages beside docs/ as the site has them."""

    def link(match):
        name = match.group(1)
        target = root / "docs" / name
        if not target.exists():
            return match.group(0)
        shown = title_of(target)
        up = "../" if folder == "decisions" else ""
        return f"[{shown}]({up}{name})"

    parts = re.split(r"(^```.*?^```$)", text, flags=re.M | re.S)
    for number in range(0, len(parts), 2):
        parts[number] = re.sub(r"`docs/([\w/-]+\.md)`", link, parts[number])
        for name in BESIDE:
            parts[number] = parts[number].replace(f"](../{name}", f"]({name}")
            parts[number] = re.sub(rf"(?<!\[)`{name}`", f"[`{name}`]({'../' if folder else ''}{name})", parts[number])
        parts[number] = parts[number].replace("`docs/decisions/`", "[Decisions](decisions/README.md)")
    return "".join(parts)


def title_of(page):
    return page.read_text().split("\n", 1)[0].removeprefix("# ")


def index_with_trees(text):
    """Each heading's list of pages becomes a part of the navigation."""
    out = []
    for part in re.split(r"(?=^## )", text, flags=re.M):
        out.append(part)
        pages = re.findall(r"^- \[[^]]*\]\(([\w/.-]+)\.md\)", part, re.M)
        if pages:
            heading = part.split("\n", 1)[0].removeprefix("## ")
            out.append("```{toctree}\n:hidden:\n:caption: " + heading + "\n\n" + "\n".join(pages) + "\n```\n\n")
    return "".join(out)


def decisions_with_tree(text):
    return text + "\n```{toctree}\n:hidden:\n\n" + "\n".join(re.findall(r"\((0\S+)\.md\)", text)) + "\n```\n"


# The man pages are ours, so the few requests that they use are all that is to be read.


def words_of(line):
    text = line.replace("\\&", "").replace("\\-", "-").replace("\\e", "\\")
    return re.sub(r"\\f[BIR]", "", text)


def in_markdown(text):
    return re.sub(r"([\\`*_{}\[\]<>#|])", r"\\\1", text)


def section_of_command(page, level):
    """A man page as a section of the page of commands."""
    out, literal, heading, term = [], False, "", False
    for line in page.split("\n"):
        if line.startswith((".TH", ".PP", ".RS", ".RE")):
            out.append("")
        elif line.startswith(".SH"):
            heading = line[4:].strip('"')
            if heading in ("COMMANDS", "SETTINGS", "FILES"):
                out.append("\n" + "#" * (level + 1) + " " + heading.capitalize() + "\n")
        elif heading in ("EXIT STATUS", "SEE ALSO") or (heading == "OPTIONS" and level > 1):
            continue
        elif line.startswith(".SS"):
            out.append("\n" + "#" * (level + 1) + " " + words_of(line[4:]) + "\n")
        elif line == ".nf":
            literal = True
            out.append("\n```text")
        elif line == ".fi":
            literal = False
            out.append("```\n")
        elif line == ".TP":
            term = True
        elif line in (".br", ""):
            continue
        elif heading == "NAME":
            out.append("\n" + "#" * level + " " + words_of(line).split(" - ")[0].replace("orlocal-", "orlocal ", 1))
        elif heading == "SYNOPSIS":
            out.append(f"\n`{words_of(line)}`")
        elif literal:
            out.append(words_of(line).strip())
        elif term:
            out.append(f"\n`{words_of(line)}`")
            term = "meaning"
            continue
        else:
            out.append((": " if term == "meaning" else "") + in_markdown(words_of(line)))
            term = False
            continue
        if line != ".TP" and term is True:
            term = False
    return "\n".join(out)


def commands_page(orlocal):
    with tempfile.TemporaryDirectory() as folder:
        subprocess.run([orlocal, "completion-files", folder], check=True)
        pages = pathlib.Path(folder) / "man" / "man1"
        program = (pages / "orlocal.1").read_text()
        names = re.findall(r"^\.BR (\S+) \(1\)", program, re.M)
        parts = ["# Commands\n\nWhat `orlocal help` shows, and the man pages: made from the program's own table of commands.\n"]
        # Of the program's own page the commands are the rest of this one.
        for name in names:
            parts.append(section_of_command((pages / f"{words_of(name)}.1").read_text(), 2))
        return "\n".join(parts)


def gather(orlocal, stage):
    for page in (root / "docs").rglob("*.md"):
        place = page.relative_to(root / "docs")
        text = with_links(page.read_text(), str(place.parent).strip("."))
        if str(place) == "README.md":
            place, text = pathlib.Path("index.md"), index_with_trees(text)
        elif str(place) == "decisions/README.md":
            text = decisions_with_tree(text)
        (stage / place).parent.mkdir(parents=True, exist_ok=True)
        (stage / place).write_text(text)
    for name in BESIDE:
        (stage / name).write_text(with_links((root / name).read_text(), ""))
    shutil.copytree(root / "docs/pictures", stage / "pictures")
    (stage / "commands.md").write_text(commands_page(orlocal))


def main():
    orlocal, output = sys.argv[1:3]
    with tempfile.TemporaryDirectory() as folder:
        stage = pathlib.Path(folder)
        gather(orlocal, stage)
        # The packaged interpreter is the one that the packaged Sphinx belongs to.
        sphinx = ["/usr/bin/python3", "-m", "sphinx", "-q", "-W", "--keep-going", "-b", "html"]
        made = subprocess.run([*sphinx, "-c", root / "docs/site", stage, output])
    return made.returncode


if __name__ == "__main__":
    sys.exit(main())
