"""A mail server that keeps what it gets: a line of JSON for each mail.

Arguments: [tls|starttls CERTIFICATE KEY] [login USER PASSWORD] [refuse ADDRESS REPLY]... [reject REPLY] [silent]
"""
import asyncio, email, email.policy, json, logging, ssl, sys, warnings
from aiosmtpd.smtp import SMTP, AuthResult

warnings.simplefilter("ignore")
logging.disable()
words = sys.argv[1:]
refused, context, login, rejects, implicit, silent = {}, None, None, None, False, False
while words:
    word = words.pop(0)
    if word in ("tls", "starttls"):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(words.pop(0), words.pop(0))
        implicit = word == "tls"
    elif word == "login":
        login = (words.pop(0), words.pop(0))
    elif word == "refuse":
        address = words.pop(0)
        refused[address] = words.pop(0)
    elif word == "reject":
        rejects = words.pop(0)
    elif word == "silent":
        silent = True


class Keeper:
    async def handle_RCPT(self, server, session, envelope, address, options):
        if address in refused:
            return refused[address]
        envelope.rcpt_tos.append(address)
        return "250 OK"

    async def handle_DATA(self, server, session, envelope):
        if rejects:
            return rejects
        raw = envelope.content
        mail = email.message_from_bytes(raw, policy=email.policy.default)
        print(json.dumps({
            "from": envelope.mail_from,
            "to": envelope.rcpt_tos,
            "login": bool(session.authenticated),
            "tls": session.ssl is not None or implicit,
            "headers": {name: str(value) for name, value in mail.items()},
            "names": [name for name, _ in mail.items()],
            "people": [[a.display_name, a.addr_spec] for a in mail["To"].addresses] if mail["To"] else [],
            "defects": [str(d) for d in mail.defects] + [str(d) for h in mail.values() for d in h.defects],
            "body": mail.get_content().replace("\r\n", "\n"),
            "raw": raw.decode("latin-1"),
        }), flush=True)
        return "250 Kept"


def authenticate(server, session, envelope, mechanism, data):
    given = (data.login.decode(), data.password.decode())
    return AuthResult(success=given == login, handled=False)


def make():
    return SMTP(Keeper(), authenticator=authenticate if login else None, auth_required=bool(login),
                auth_require_tls=bool(context) and not implicit, decode_data=False,
                tls_context=None if implicit else context, require_starttls=bool(context) and not implicit)


async def serve():
    factory = asyncio.Protocol if silent else make
    server = await asyncio.get_running_loop().create_server(factory, "127.0.0.1", 0, ssl=context if implicit else None)
    print(server.sockets[0].getsockname()[1], flush=True)
    await server.serve_forever()

asyncio.run(serve())
