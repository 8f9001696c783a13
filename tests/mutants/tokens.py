"""C++ sources as tokens, with what stands around each: enough to find places that can be changed, and no compiler.

Comments, texts, and lines of the preprocessor are no tokens. The project's format is relied on: an operator of two operands
has a blank on both sides, and the brackets of a template have none inside.
"""
import dataclasses
import re

PARTS = re.compile(
    r"""
    (?P<skip>\s+ | //[^\n]* | /\*.*?\*/ | ^[ \t]*\#(?:[^\n\\]|\\.)* )
  | (?P<text>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)"
      | (?:u8|[uUL])?"(?:[^"\\\n]|\\.)*" | (?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
  | (?P<number>\.?\d(?:[eEpP][+-]|'(?=\w)|[\w.])*)
  | (?P<name>[A-Za-z_]\w*)
  | (?P<sign><=>|->\*|\.\.\.|<<=|>>=|::|->|\+\+|--|<<|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|.)
    """,
    re.VERBOSE | re.DOTALL | re.MULTILINE)

OPENING = {"(": ")", "[": "]", "{": "}"}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


def tokens_of(text):
    """The tokens of a source."""
    return [Token(found.lastgroup if found.lastgroup != "mark" else "text", found.group(), found.start(), found.end())
            for found in PARTS.finditer(text) if found.lastgroup != "skip"]


class Source:
    """A source's tokens, which brackets belong together, and what each pair of braces is."""

    def __init__(self, text):
        self.text = text
        self.tokens = tokens_of(text)
        self.partner = {}
        self.scopes = []  # of each token, the kinds of the braces around it, from the outside
        self.braces = {}  # of each opening brace, its kind
        self._match()

    def word(self, index):
        return self.tokens[index].text if 0 <= index < len(self.tokens) else ""

    def spaced(self, index):
        """Whether the token stands between blanks, as an operator of two operands does."""
        token = self.tokens[index]
        return self.text[token.start - 1:token.start].isspace() and self.text[token.end:token.end + 1].isspace()

    def runs(self, index):
        """Whether the token is part of what runs: in a function's body, and not in a class inside it."""
        kinds = [kind for kind in self.scopes[index] if kind != "list"]
        return bool(kinds) and kinds[-1] in ("function", "block")

    def head(self, brace):
        """Where what introduces an opening brace begins: after the last end of a statement or of a block."""
        at = brace - 1
        while at >= 0 and self.word(at) not in (";", "{", "}"):
            if self.word(at) in (")", "]"):
                at = self.partner.get(at, at)
            at -= 1
        return at + 1

    def _match(self):
        open_brackets, kinds = [], []
        for index, token in enumerate(self.tokens):
            if token.kind == "sign" and token.text in OPENING:
                self.scopes.append(tuple(kinds))
                open_brackets.append(index)
                if token.text == "{":
                    self.braces[index] = self._kind(index, kinds)
                    kinds.append(self.braces[index])
                continue
            if token.kind == "sign" and token.text in OPENING.values() and open_brackets:
                opening = open_brackets.pop()
                self.partner[index], self.partner[opening] = opening, index
                if token.text == "}" and kinds:
                    kinds.pop()
            self.scopes.append(tuple(kinds))

    def _kind(self, brace, kinds):
        words = [token.text for token in self.tokens[self.head(brace):brace]]
        before = words[-1] if words else ""
        if "namespace" in words or words[:1] == ["extern"]:
            return "namespace"
        if before in ("else", "do", "try") or words[:1] and words[0] in ("if", "for", "while", "switch", "catch"):
            return "block"
        # What is returned or assigned is a list, and so are the arguments of a call, unless a lambda stands there.
        if before == ")" or before in ("const", "override", "noexcept", "mutable") or self._names_result(words):
            return "function"
        if any(word in words for word in ("class", "struct", "enum", "union")) and "(" not in words and "=" not in words:
            return "type"
        if not words and kinds and kinds[-1] in ("function", "block"):
            return "block"
        if before == "]":
            return "function"  # a lambda without parameters
        return "list"

    @staticmethod
    def _names_result(words):
        """`) -> Type {`, or the members that a constructor begins with: `) : m_a(a), m_b(b) {` ends in a bracket anyway."""
        for at in range(len(words) - 1, 0, -1):
            if words[at] == "->":
                return words[at - 1] == ")"
            if not (words[at].isidentifier() or words[at] in ("::", "<", ">", "*", "&")):
                return False
        return False
