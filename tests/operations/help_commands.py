#!/usr/bin/env python3
"""The help book's commands that docs/operations.md does not have, one a line, for
tests/packaging/system_test to run: help_commands.py PROJECT [--not-run]. With --not-run, those that it
does not run, with the reason."""

import html
import pathlib
import re
import sys

NOT_RUN = {
    "ufw allow 514": "another firewall",
    "firewall-cmd --permanent --add-service=syslog": "another firewall",
    "tcpdump -n -i any port 514": "goes on until somebody ends it",
    "systemctl edit quorbelsrv": "opens an editor",
    "sudo -i": "a shell for somebody who sits there",
    "sqlite3 -readonly /Library/Quorbel/events.db":
        "wants an export to a database; tests/service/export asks such for hosts",
}

# Lines of files that the book shows. All others are commands.
IN_FILES = re.compile(r'\*\.\*|\[|ForwardTo|global\(|action\(|ReadWritePaths|#!|echo "\$QUORBEL|Quorbel filters'
                      r'|filter |matches |or |host |severity |Host |\s|$')


def commands_in(chapter):
    for block in re.findall(r"(?s)<pre>(.*?)</pre>", chapter):
        text = html.unescape(re.sub("<[^>]*>", "", block)).replace("\\\n", "")
        for line in text.splitlines():
            if not IN_FILES.match(line):
                yield re.sub(" +", " ", re.sub("^sudo (?!-)", "", line))


project = pathlib.Path(sys.argv[1])
documented = re.findall(r"(?ms)^```sh$(.*?)^```$", (project / "docs/operations.md").read_text())
known = {line for block in documented for line in block.splitlines()}
commands = {}
for path in sorted((project / "src/layout/help").rglob("*.html")):
    for command in commands_in(path.read_text()):
        if command not in known:
            commands.setdefault(command)
refused = {command: reason for command in commands
           for begin, reason in NOT_RUN.items() if command.startswith(begin)}
if "--not-run" in sys.argv:
    print("\n".join(f"{command}: {reason}" for command, reason in refused.items()))
    sys.exit(len(set(refused.values())) != len(set(NOT_RUN.values())))
print("\n".join(command for command in commands if command not in refused))
