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
