"""The changes: what is looked for in a source, and what is put in its place.

Each operator takes a source and an index of a token, and gives the changes that begin there as (start, end, replacement).
"""
KEYWORDS = {"return", "if", "for", "while", "switch", "case", "default", "break", "continue", "goto", "using", "throw", "delete",
            "const", "constexpr", "static", "static_assert", "auto", "template", "typedef", "struct", "class", "enum", "else",
            "do", "try", "catch", "public", "private", "protected", "friend", "namespace", "thread_local", "co_return",
            "ORLOCAL_TRY"}
CONTROL = {"if", "for", "while", "switch", "catch", "return", "sizeof", "decltype", "alignof", "noexcept", "requires",
           "static_assert"}

DEFAULTS = {"0", "false", "nullptr", "std::nullopt", "kNothing"}

COMPARISONS = {"==": "!=", "!=": "==", "<": "<=", "<=": "<", ">": ">=", ">=": ">"}
CONNECTIVES = {"&&": "||", "||": "&&"}
SUMS = {"+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+="}
STEPS = {"++": "--", "--": "++"}
TRUTHS = {"true": "false", "false": "true"}


def replaced(words, spaced):
    """An operator that puts one word in another's place."""
    def changes(source, index):
        token = source.tokens[index]
        if token.kind != "text" and token.text in words and source.runs(index) and (not spaced or source.spaced(index)):
            yield token.start, token.end, words[token.text]
    return changes


def dropped_not(source, index):
    token = source.tokens[index]
    if token.text == "!" and token.kind == "sign" and source.runs(index):
        yield token.start, token.end, ""


def negated_if(source, index):
    """Of `if (a = f(); b)` the last part, of `if (auto a = f())` the name."""
    if source.word(index) != "if" or not source.runs(index):
        return
    opening = index + 2 if source.word(index + 1) == "constexpr" else index + 1
    if source.word(opening) != "(":
        return
    closing = source.partner[opening]
    first, assignment = opening + 1, None
    at = first
    while at < closing:
        if source.word(at) in ("(", "[", "{"):
            at = source.partner[at]
        elif source.word(at) == ";":
            first, assignment = at + 1, None
        elif source.word(at) == "=":
            assignment = at
        at += 1
    end = source.tokens[closing].start
    if assignment is not None:
        yield end, end, f"; !{source.word(assignment - 1)}"
    elif not turned_by_a_word(source, first, closing):
        start = source.tokens[first].start
        yield start, end, f"!({source.text[start:end]})"


def turned_by_a_word(source, first, end):
    """Whether another operator makes the same of a condition: drops its `!`, or turns its one comparison."""
    words, at = [], first
    while at < end:
        words.append(source.word(at))
        at = source.partner[at] + 1 if words[-1] in ("(", "[", "{") else at + 1
    return not set(words) & {"&&", "||"} and (words[0] == "!" or bool(set(words) & {"==", "!="}))


ENDS_CHOICE = {"=", "+=", "-=", "return", ",", ";", "?", ":", "{", "(", "[", "<<", "&&=", "}"}


def negated_choice(source, index):
    """`a ? b : c`: what stands before the question mark reaches back to what binds less."""
    if source.word(index) != "?" or not source.runs(index):
        return
    at = index - 1
    while at >= 0 and source.word(at) not in ENDS_CHOICE:
        if source.word(at) in (")", "]"):
            at = source.partner[at]
        at -= 1
    if not turned_by_a_word(source, at + 1, index):
        start, end = source.tokens[at + 1].start, source.tokens[index - 1].end
        yield start, end, f"!({source.text[start:end]})"


def end_of_statement(source, index):
    """The index of the statement's semicolon; none where a block or an end comes first."""
    while index < len(source.tokens):
        word = source.word(index)
        if word == ";":
            return index
        if word in ("}", ")"):
            return None
        if word in ("(", "[", "{"):
            index = source.partner.get(index, len(source.tokens))
        index += 1
    return None


def begins_statement(source, index):
    before = source.word(index - 1)
    if before in (";", "{", "}"):
        return before != "{" or source.braces.get(index - 1) in ("function", "block")
    return before == ":" and source.word(index - 2) not in ("?",) and source.word(index - 3) == "case"


def declares(source, index, end):
    """Whether a name follows a type: two names in a row, or a name behind the type's last bracket or mark."""
    for at in range(index, end):
        word = source.word(at)
        if word in ("=", "(", "[", "{", "+=", "-=", ".", "->"):
            return False
        following = source.tokens[at + 1]
        if following.kind == "name" and (source.tokens[at].kind == "name" or word in (">", "&", "*", "&&")):
            return True
    return False


def dropped_statement(source, index):
    """A call or an assignment by itself."""
    token = source.tokens[index]
    if not source.runs(index) or not begins_statement(source, index):
        return
    if token.kind != "name" and token.text not in ("++", "--", "*", "("):
        return
    if token.text in KEYWORDS:
        return
    end = end_of_statement(source, index)
    if end is None or end == index or declares(source, index, end):
        return
    yield token.start, source.tokens[end].start, ""


def early_return(source, index):
    """A function that does nothing, and gives what a default is."""
    if source.word(index) != "{" or source.braces.get(index) != "function" or source.word(index + 1) in ("}", "return"):
        return
    words = [token.text for token in source.tokens[source.head(index):index]]
    # Constructors return nothing, nor do operators of conversion something else; a lambda's result would be another type.
    if ":" in words or not words or "[" in words:
        return
    end = source.tokens[index].end
    yield end, end, " return;" if "void" in words[:words.index("(")] else " return {};"


def empty_answer(source, index):
    """`return a;` gives a default."""
    if source.word(index) != "return" or not source.runs(index):
        return
    end = end_of_statement(source, index)
    if end is None or source.word(index + 1) in (";", "{"):
        return
    answer = source.text[source.tokens[index + 1].start:source.tokens[end - 1].end]
    if answer in DEFAULTS:
        return
    yield source.tokens[index + 1].start, source.tokens[end].start, "{}"


def arguments_of(source, opening):
    """Where the arguments of a call begin and end, as indexes of tokens."""
    closing, found, first, at = source.partner[opening], [], opening + 1, opening + 1
    while at < closing:
        if source.word(at) in ("(", "[", "{"):
            at = source.partner[at]
        elif source.word(at) == ",":
            found.append((first, at - 1))
            first = at + 1
        at += 1
    return [*found, (first, closing - 1)] if first < closing else found


def swapped_arguments(source, index):
    """Two neighbours that look alike: other pairs hardly compile."""
    if source.word(index) != "(" or source.tokens[index - 1].kind != "name" or not source.runs(index):
        return
    if source.word(index - 1) in CONTROL or source.word(index - 1).isupper():
        return
    found = arguments_of(source, index)
    for (first, first_end), (second, second_end) in zip(found, found[1:]):
        left = source.text[source.tokens[first].start:source.tokens[first_end].end]
        right = source.text[source.tokens[second].start:source.tokens[second_end].end]
        simple = all(source.tokens[at].kind in ("name", "number") or source.word(at) in (".", "->", "*", "(", ")", "::")
                     for ends in ((first, first_end), (second, second_end)) for at in range(ends[0], ends[1] + 1))
        named = not any(declares(source, *ends) for ends in ((first, first_end), (second, second_end)))
        if simple and named and left != right and (left[0].isdigit() == right[0].isdigit()):
            yield source.tokens[first].start, source.tokens[second_end].end, f"{right}, {left}"


def other_number(source, index):
    """One more; in tables, too, but not where a number is part of a type."""
    token = source.tokens[index]
    if token.kind != "number" or source.word(index - 1) in ("[", "<") or not token.text.isdigit():
        return
    # Of templates' arguments, of numbers with their unit, and of types nothing: they are part of a declaration.
    if source.word(index + 1) == ">" and not source.spaced(index + 1):
        return
    if not (source.runs(index) or "list" in source.scopes[index] or source.word(index - 1) == "="):
        return
    yield token.start, token.end, str(int(token.text) + 1)


OPERATORS = {
    "comparison": replaced(COMPARISONS, spaced=True),
    "connective": replaced(CONNECTIVES, spaced=True),
    "sum": replaced(SUMS, spaced=True),
    "step": replaced(STEPS, spaced=False),
    "truth": replaced(TRUTHS, spaced=False),
    "dropped not": dropped_not,
    "negated condition": negated_if,
    "negated choice": negated_choice,
    "dropped statement": dropped_statement,
    "early return": early_return,
    "empty answer": empty_answer,
    "swapped arguments": swapped_arguments,
    "other number": other_number,
}
