"""What a small fault looks like: the mutants of a source file."""

import re

# What stands for what. The patterns see code in which comments and texts are blanked out.
SWAPS = [(re.compile(pattern), changed) for pattern, changed in (
    (r" < ", (" <= ", " >= ")), (r" > ", (" >= ", " <= ")), (r" <= ", (" < ", " > ")), (r" >= ", (" > ", " < ")),
    (r" == ", (" != ",)), (r" != ", (" == ",)), (r" && ", (" || ",)), (r" \|\| ", (" && ",)),
    (r" \+ ", (" - ",)), (r" - ", (" + ",)), (r" \* ", (" / ",)), (r" / ", (" * ",)), (r" % ", (" * ",)),
    (r" & ", (" | ",)), (r" \| ", (" & ",)), (r" \^ ", (" & ",)), (r" << ", (" >> ",)), (r" >> ", (" << ",)),
    (r" \+= ", (" -= ",)), (r" -= ", (" += ",)), (r" \^= ", (" &= ",)), (r"\+\+", ("--",)), (r"--", ("++",)),
    (r"\btrue\b", ("false",)), (r"\bfalse\b", ("true",)), (r"(?<=[(&|=n] )!(?=\w)|(?<=\()!(?=\w)", ("",)),
    (r"\bstd::min\b", ("std::max",)), (r"\bstd::max\b", ("std::min",)),
    (r"(?<![\w.'])0(?![\w.'])", ("1",)), (r"(?<![\w.'])[1-9]\d*(?![\w.'])", ("0", "+1")),
    (r"\bVARIANT_TRUE\b|\bTRUE\b", ("0",)), (r"\bVARIANT_FALSE\b|\bFALSE\b", ("-1",)),
    (r"\bError::(?!Overflow\b)\w+", ("Error::Overflow",)), (r"\bError::Overflow\b", ("Error::TypeMismatch",)),
    (r"\beErr(\w+)_(?!ComponentFailure\b)\w+", (r"eErr\1_ComponentFailure",)),
    (r"\b([A-Z]\w*_\w+) \| (?=[A-Z]\w*_)", ("",)), (r" \| [A-Z][A-Z0-9]*_\w+", ("",)),
    (r"(?<=\()([\w.>*&-]+(?<!const)), ([\w.>*&-]+)(?=[,)])", (r"\2, \1",)),
)]
CONDITION = re.compile(r"\b(?:if|while) \((.*)\)(?= |$)")
STATEMENT = re.compile(r"^\s*(?!return\b|using\b|throw\b|constexpr\b|static|friend\b|namespace\b|case\b)[\w:>.\[\]()*+-]+.*;\s*$")
DECLARATION = re.compile(r"^\s*(?:const |std::|auto |[\w:]+(?:<.*>)?[ &*]+\w+(?: = |\(|;|\{|\[))")
THROW = re.compile(r"\bthrow RuntimeError\(Error::\w+\);")


def blanked(text: str) -> list[str]:
    """The lines with comments, texts, characters and directives as blanks, every column where it was."""
    parts = re.compile(r'//[^\n]*|/\*.*?\*/|"(?:\\.|[^"\\\n])*"|\'(?:\\.|[^\'\\\n])+\'(?!\w)|^\s*#[^\n]*|\bstatic_assert[^;]*;',
                       re.S | re.M)
    return parts.sub(lambda found: re.sub(r"[^\n]", "\0", found[0]), text).split("\n")


def mutants(text: str) -> list[tuple[int, str]]:
    """Line number and what it reads in the mutant."""
    made = set()
    originals = text.split("\n")
    for number, (line, code) in enumerate(zip(originals, blanked(text))):
        for pattern, changes in SWAPS:
            for found in pattern.finditer(code):
                for change in changes:
                    new = str(int(found[0]) + 1) if change == "+1" else found.expand(change)
                    made.add((number, line[:found.start()] + new + line[found.end():]))
        if found := CONDITION.search(code):
            made.add((number, f"{line[:found.start(1)]}!({line[found.start(1):found.end(1)]}){line[found.end(1):]}"))
        if found := THROW.search(code):
            made.add((number, line[:found.start()] + ";" + line[found.end():]))
        if STATEMENT.match(code) and not DECLARATION.match(code):
            made.add((number, re.sub(r"\S.*", ";", line)))
    return sorted(made)
