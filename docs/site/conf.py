"""How Sphinx makes the site; make.py gathers the pages."""
from pygments import token
from pygments.lexer import RegexLexer
from sphinx.highlighting import lexers

project = "Orlocal"
extensions = ["myst_parser"]
source_suffix = {".md": "markdown"}
myst_enable_extensions = ["deflist"]
myst_heading_anchors = 3

html_theme = "furo"
html_title = "Orlocal"
html_static_path = ["static"]
html_css_files = ["orlocal.css"]
html_copy_source = False
html_show_copyright = False
# Sentences and quotes are the program's, to the letter.
smartquotes = False

# The same pages for those who type `man orlocal-tutorial`.
MANUALS = {
    "accounts": ("orlocal-accounts", "calendars shared by a calendar server", 7),
    "errors": ("orlocal-errors", "what functions report, why, and what to do", 7),
    "functions": ("orlocal-functions", "the functions of the plug-in", 7),
    "properties": ("orlocal-properties", "what of calendars, events and reminders the functions read and set", 7),
    "recipes": ("orlocal-recipes", "calculations for what solutions do most", 7),
    "server": ("orlocal-server", "the plug-in in a database host's server", 7),
    "settings": ("orlocal.conf", "settings of Orlocal", 5),
    "terminal": ("orlocal-terminal", "calendars at the command line", 7),
    "troubleshooting": ("orlocal-troubleshooting", "what is seen, why, and what helps", 7),
    "tutorial": ("orlocal-tutorial", "from nothing to a solution that uses calendars", 7),
    "words": ("orlocal-words", "days, times and repetitions as people write them", 7),
}
man_pages = [(page, name, words, [], section) for page, (name, words, section) in MANUALS.items()]


class TranscriptLexer(RegexLexer):
    """Calculations and commands with what they print."""

    name = "transcript"
    tokens = {
        "root": [
            (r"^@.*\n", token.Comment),
            (r"^#.*\n", token.Comment),
            (r"^[>$] ", token.Generic.Prompt, "typed"),
            (r"^!.*\n", token.Generic.Error),
            (r"^.*\n", token.Generic.Output),
        ],
        # A calculation goes on over lines that are indented.
        "typed": [(r".*\n(?:  +.*\n)*", token.Text, "#pop")],
    }


lexers["transcript"] = TranscriptLexer()
