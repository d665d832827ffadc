#!/usr/bin/env python3
"""Whether docs/operations.md describes each line that the service writes to its journal, and each
counter, and nothing else: words_test.py PROJECT."""

import pathlib
import re
import sys

project = pathlib.Path(sys.argv[1])
document = (project / "docs/operations.md").read_text()
failures = []


def check(what, problems):
    """The problems, each on a line of its own, under what should hold."""
    if problems:
        failures.append(what + ":\n" + "\n".join("    " + each for each in problems))


# --- What the code says ----------------------------------------------------------------------------

# Texts that are not for the journal, with where they go.
ELSEWHERE = {
    "bus/Commands.cpp": "replies to commands",
    "bus/CommandFile.cpp": "replies to commands",
    "store/EventRemoval.cpp": "replies to commands",
    "store/EventRestoration.cpp": "replies to commands",
    "base/Refusals.cpp": "the status over the bus",
    "mail/MailMessage.cpp": "the mails themselves",
    "message/MessageParser.cpp": "what messages have in them",
    "export/Sqlite.cpp": "the database's language",
    "output/FeedCursor.cpp": "the files of cursors",
}
ELSEWHERE_TEXTS = {
    "The settings could not be stored": "a reply to a command",
    "The damaged settings file could not be renamed": "a reply to a command",
    "The command cannot be read": "a reply to a command",
    "Too many commands are waiting": "a reply to a command",
    "There are no recipients": "a reply to a command",
    "Too many e-mails are waiting": "the status over the bus",
    "The mail server refused ": "a reply to a command",
    "RCPT TO:": "for the mail server",
    "QuorbelSrv ": "printed for --version",
    " more event": "an e-mail",
    " more events": "an e-mail",
    " in the last minute": "an e-mail",
    'The action "': "an e-mail",
    '" matched ': "an e-mail",
    " in the last minute, for which no e-mails were sent.\r\n": "an e-mail",
}
SAYS = re.compile(r"\b(?:say|sayOf|sayOdd|note|connectionLost|runtime_error)\(")
LITERAL = re.compile(r'"((?:[^"\\\n]|\\.)*)"')
SQL = re.compile(r"^(?:SELECT|INSERT|DELETE|UPDATE|CREATE|DROP|PRAGMA|BEGIN|FROM|WHERE|REINDEX) ")


def without_comments(code):
    code = re.sub(r'R"\((?s:.*?)\)"', '""', code)
    code = re.sub(r"(?m)^\s*#.*$", "", code)
    code = re.sub(r"'(?:[^'\\\n]|\\.)'", "0", code)
    return re.sub(r"(?m)(?<!:)//.*$", "", code)


def literals(code):
    """Of a piece of code; adjacent ones are one, as for a compiler."""
    joined = re.sub(r'(?<!\\)"\s+"', "", code)
    for found in LITERAL.finditer(joined):
        yield bytes(found.group(1), "utf-8").decode("unicode_escape")


def statement_at(code, begin):
    """From there to the semicolon that ends it, none of those within literals."""
    blank = LITERAL.sub(lambda found: "_" * len(found.group(0)), code[begin:])
    end = blank.find(";")
    return code[begin:begin + end]


def texts_of(name, code):
    """What may be in a journal line: all of what is handed to the journal, and every text of more
    than one word, because many come there through variables."""
    code = without_comments(code)
    texts = {text for text in literals(code) if re.search(r"[A-Za-z].* |^ .*[A-Za-z]| .*[A-Za-z]", text)}
    for found in SAYS.finditer(code):
        texts |= set(literals(statement_at(code, found.start())))
    return {text for text in texts
            if re.search("[A-Za-z]{2}", text) and text not in ELSEWHERE_TEXTS and not SQL.match(text)}


service = project / "src/service"
said = {}
for path in sorted(service.rglob("*.cpp")) + sorted(service.rglob("*.h")):
    name = str(path.relative_to(service))
    if name not in ELSEWHERE and name != "base/Counters.cpp":
        for text in texts_of(name, path.read_text()):
            said.setdefault(text, name)

# --- What the document says ------------------------------------------------------------------------

chapter = re.search(r"(?ms)^## Journal lines$(.*?)^## ", document).group(1)
lines = re.findall(r"(?m)^\| `([^`]*)` \|", chapter)
# Words that stand for others, and such as both programs share.
PLACEHOLDERS = (r'\b(?:FILE|FOLDER|REASON|N|ADDRESS|NAME|TEXT|HOST)\b(?!=)|com\.Halvern\.QuorbelSrv'
                r'|"None"|"STARTTLS"|"SSL/TLS"')


def is_described(text):
    """Whether it is in one of the lines, where what it holds for a placeholder is one."""
    return any(text.strip() in line for line in lines)


def is_said(piece):
    """Whether the piece of a line consists of texts of the code, in any number."""
    around = ' ":,'
    known = {text.strip(around) for text in said} - {""}
    rest = piece.strip(around)
    while rest:
        begin = max((text for text in known if rest.startswith(text)), key=len, default=None)
        if begin is None:
            return False
        rest = rest[len(begin):].strip(around)
    return True


check("each text of the journal is described under \"Journal lines\"",
      [f"{name}: {text!r}" for text, name in said.items() if not is_described(text)])
check("each line that is described is still said",
      [f"{line}: {piece!r}" for line in lines for piece in re.split(PLACEHOLDERS, line)
       if not is_said(piece)])
check("each row has its meaning", re.findall(r"(?m)^\| `[^`]*` \| *\|$", chapter))

# --- Counters --------------------------------------------------------------------------------------

code = (service / "base/Counters.cpp").read_text()
counters = re.findall(r'\{"(?:, )?([^"]*)", counters\.', code)
# The first one begins the line.
counters = [name[:1].upper() + name[1:] for name in counters[:1]] + counters[1:]
described = re.findall(r"(?m)^\| `([^`]*)` \| [^|]+ \|",
                       re.search(r"(?ms)^## Counters$(.*?)^## ", document).group(1))
check("the counters are described, in their order",
      [] if counters and counters == described else
      sorted(set(counters) ^ set(described)) or ["their order, or none found"])
for chapter in sorted((project / "src/layout/help").rglob("service.html")):
    told = {name for cell in re.findall(r"<tr><td>([^<]*)</td><td>", chapter.read_text())
            for name in cell.split(", ")}
    check(f"{chapter.relative_to(project)} tells of each counter", sorted(set(counters) - told))

print(f"{len(said)} texts of the service, {len(lines)} lines and {len(described)} counters described.")
if failures:
    print("\n".join("FAILED: " + each for each in failures))
    sys.exit(1)
print("All checks passed.")
