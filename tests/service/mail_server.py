"""A mail server of another maker, for tests: mail_server.py none|starttls|tls CERTIFICATE KEY FOLDER

Listens on a port of 127.0.0.1, whose number it writes to FOLDER/port, and appends each mail it
takes to FOLDER/mails as a line of JSON. Nobody sends without logging in. Ends with its standard
input.
"""

import asyncio
import email
import email.policy
import json
import logging
import os
import ssl
import sys

from aiosmtpd.smtp import SMTP, AuthResult


class Mails:
    def __init__(self, file):
        self.file = file

    async def handle_DATA(self, server, session, envelope):
        mail = email.message_from_bytes(envelope.content, policy=email.policy.SMTP)
        seen = {
            "sender": envelope.mail_from,
            "recipients": envelope.rcpt_tos,
            "subject": mail["Subject"],
            "type": mail.get_content_type(),
            "body": mail.get_content(),
            "encrypted": server.transport.get_extra_info("ssl_object") is not None,
            "login": session.auth_data.decode(),
        }
        print(json.dumps(seen), file=self.file, flush=True)
        return "250 Taken"


def log_in(server, session, envelope, mechanism, data):
    valid = (data.login, data.password) == (b"user", b"s3cret")
    return AuthResult(success=valid, handled=False, auth_data=data.login)


async def serve(security, certificate, key, folder):
    context = None
    if security != "none":
        context = ssl.create_default_context(ssl.Purpose.CLIENT_AUTH)
        context.load_cert_chain(certificate, key)
    starttls = context if security == "starttls" else None
    loop = asyncio.get_running_loop()
    with open(os.path.join(folder, "mails"), "a", encoding="utf-8") as file:

        def session():
            return SMTP(
                Mails(file),
                hostname="localhost",
                tls_context=starttls,
                require_starttls=starttls is not None,
                authenticator=log_in,
                auth_required=True,
                auth_require_tls=starttls is not None,
            )

        implicit = context if security == "tls" else None
        server = await loop.create_server(session, "127.0.0.1", 0, ssl=implicit)
        port = os.path.join(folder, "port")
        with open(port + ".new", "w", encoding="ascii") as number:
            print(server.sockets[0].getsockname()[1], file=number)
        os.rename(port + ".new", port)
        await loop.run_in_executor(None, sys.stdin.read)


if __name__ == "__main__":
    logging.getLogger("mail.log").setLevel(logging.ERROR)
    asyncio.run(serve(*sys.argv[1:]))
