"""Makes the site: gathers the pages, writes the page of the commands from the program's own man pages, calls Sphinx.
With --man it makes the man pages that conf.py lists instead, of the same pages.

usage: make.py [--man] ORLOCAL OUTPUT_FOLDER

The pages are those that docs/README.md lists, in its order and under its headings. One that it does not list, a link
that leads nowhere and whatever else Sphinx warns of ends with status 1.
"""
import os
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
        if not folder:
            parts[number] = parts[number].replace("](README.md)", "](index.md)")
        parts[number] = parts[number].replace("`docs/decisions/`", "[Decisions](decisions/README.md)")
    return "".join(parts)


def title_of(page):
    return page.read_text().split("\n", 1)[0].removeprefix("# ")


def index_with_trees(text):
    """Each heading's list of pages becomes a part of the navigation. The page of the commands is only here."""
    text = text.replace("\n- Commands:", "\n- [Commands](commands.md):")
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


def section_of_command(page):
    """A man page as a section of the page of commands."""
    out, heading = [], ""
    lines = iter(page.split("\n"))
    for line in lines:
        if line.startswith(".SH"):
            heading = line[4:]
        elif heading == "NAME":
            out.append(f"## {words_of(line).split(' - ')[0].replace('-', ' ', 1)}\n")
        elif heading == "SYNOPSIS" and not line.startswith("."):
            out.append(f"`{words_of(line)}`\n")
        elif heading == "DESCRIPTION":
            if line.startswith(".SS"):
                out.append(f"### {words_of(line[4:])}\n")
            elif line == ".TP":
                out.append(f"`{words_of(next(lines))}`\n: {in_markdown(words_of(next(lines)))}\n")
            elif line == ".nf":
                examples = [words_of(example).strip() for example in iter(lambda: next(lines), ".fi")]
                out.append("```text\n" + "\n".join(e for e in examples if not e.startswith(".")) + "\n```\n")
            elif not line.startswith("."):
                out.append(in_markdown(words_of(line)) + "\n")
    return "\n".join(out)


def commands_page(orlocal):
    with tempfile.TemporaryDirectory() as folder:
        # In English, whatever the machine speaks.
        environment = {**os.environ, "LANGUAGE": "en", "LC_ALL": "C.UTF-8", "ORLOCAL_SETTINGS": ""}
        subprocess.run([orlocal, "completion-files", folder], check=True, env=environment)
        pages = pathlib.Path(folder) / "man" / "man1"
        program = (pages / "orlocal.1").read_text()
        names = re.findall(r"^\.BR (\S+) \(1\)", program, re.M)
        # What else its page says of the program stands in other pages and in `orlocal --help`.
        intro = "What `orlocal help COMMAND` shows, and the man pages: made from the program's own table of commands."
        sections = [section_of_command((pages / f"{words_of(name)}.1").read_text()) for name in names]
        return f"# Commands\n\n{intro}\n\n" + "\n".join(sections)


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


def complete_style(output):
    """What the packaged theme lacks. It asks a web server of Debian's for a part of its style, which the site has in
    itself; it has dark colours for those who choose them, not for those whose system is dark; and its script is in two
    parts that only a bundler could join."""
    shutil.copy("/usr/share/javascript/normalize.css/normalize.css", output / "_static")
    style = output / "_static/styles/furo.css"
    text = style.read_text().replace("/javascript/normalize.css/normalize.css", "../normalize.css")
    if "prefers-color-scheme" not in text:
        dark = re.search(r'body\[data-theme="dark"\] \{.*?\}', text, re.S).group(0)
        text += "\n@media screen and (prefers-color-scheme: dark) {\n" + dark.replace('"dark"', '"auto"') + "\n}\n"
    style.write_text(text)
    scripts = output / "_static/scripts"
    joined = (scripts / "gumshoe-patched.js").read_text() + (scripts / "furo.js").read_text()
    (scripts / "furo.js").write_text(re.sub(r"^import .*$", "", joined, flags=re.M))


def main():
    man = sys.argv[1] == "--man"
    orlocal, output = sys.argv[-2], pathlib.Path(sys.argv[-1])
    with tempfile.TemporaryDirectory() as folder:
        stage = pathlib.Path(folder)
        gather(orlocal, stage)
        # The packaged interpreter is the one that the packaged Sphinx belongs to.
        sphinx = ["/usr/bin/python3", "-m", "sphinx", "-q", "-W", "--keep-going", "-b", "man" if man else "html"]
        made = subprocess.run([*sphinx, "-c", root / "docs/site", stage, output])
    if not man:
        complete_style(output)
    return made.returncode


if __name__ == "__main__":
    sys.exit(main())
