#!/usr/bin/env python3
"""WebSocket servers of another library than the client's; the path of an address chooses what they do.

Prints one line of JSON that tells where they listen, then what it saw of each connection whose address
has a query that does not end with "-reste". Ends with SIGTERM, or after ten minutes.
"""
import asyncio
import base64
import http
import json
import os
import pathlib
import ssl
import sys
import tempfile
import urllib.parse

from websockets.exceptions import ConnectionClosed
from websockets.legacy.server import WebSocketServerProtocol, serve

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from autorite import fabriquer

SON = base64.b64encode(bytes(range(48))).decode()
conge_donne = asyncio.Event()


async def echo(ws):
    async for message in ws:
        await ws.send(message)


async def fragments(ws):
    await ws.send(["mor", "ce", "lé"])
    await ws.send([b"caf", b"\xc3", b"\xa9"])
    await ws.send(b"\xff\xfe")  # no text at all: to be dropped
    await ws.send("fin")
    await ws.wait_closed()


async def grand(ws, octets):
    await ws.send("x" * int(octets))
    await ws.wait_closed()


async def coupe(ws):
    """Ends in the middle of a frame."""
    ws.transport.write(b"\x81\x05avant\x81\x7e\x10\x00abc")
    ws.transport.close()


async def brut(ws, octets):
    ws.transport.write(bytes.fromhex(octets))
    await ws.wait_closed()


async def congedie(ws, fois):
    """Speaks, says why it leaves, and is gone before the client has answered."""
    ws.transport.write(b"\x81\x02un" * int(fois) + b"\x88\x06\x0b\xb8non!")
    ws.transport.close()


async def sourd(ws, octets=""):
    """Says that at most, then neither reads, speaks nor lets go."""
    ws.transport.pause_reading()
    ws.transport.write(bytes.fromhex(octets))
    await asyncio.sleep(60)


async def bavard(ws):
    """Speaks and does not read; once asked to leave, says that it does and stays."""
    ws.transport.pause_reading()
    while not conge_donne.is_set():
        await ws.send("encore")
        await asyncio.sleep(0.02)
    await sourd(ws, "8800")


async def renvoie(_):
    """Asks the talkative ones to leave."""
    conge_donne.set()


async def realtime(ws, modele):
    """A session of a realtime service, in the dialect that the model's name begins with."""
    dialecte, _, suite = modele.partition("-")

    async def dire_tout(*evenements):
        for evenement in evenements:
            await ws.send(json.dumps(evenement))

    async def attendre(genre):
        while json.loads(await ws.recv())["type"] != genre:
            pass

    def appel(identifiant):
        """The one event by which a dialect tells a call, after one that is not it."""
        fini = {"name": "focus", "arguments": "{}", "call_id": identifiant}
        element = {"type": "response.output_item.done", "item": {"type": "function_call", **fini}}
        fini["type"] = "response.function_call_arguments.done"
        return [fini, element] if dialecte == "openai" else [element, fini]

    await dire_tout({"type": "session.created" if dialecte == "openai" else "conversation.created"})
    await attendre("session.update")
    await dire_tout({"type": "session.updated"})
    if suite == "reste":
        await ws.wait_closed()
    for _ in range(3):
        await attendre("input_audio_buffer.append")
    await dire_tout(
        {"type": "input_audio_buffer.speech_started"}, {"type": "input_audio_buffer.speech_stopped"},
        {"type": "conversation.item.added", "item": {"id": "item_1"}},
        {"type": "conversation.item.input_audio_transcription.completed", "transcript": "ouvre tout"},
        {"type": "response.output_audio.delta", "delta": SON}, *appel("a"), *appel("b"),
        {"type": "response.done", "response": {"usage": {"input_token_details": {"cached_tokens": 7}}}})
    await attendre("response.create")
    await attendre("session.update")
    await dire_tout({"type": "session.updated"})
    if suite == "chute":
        ws.transport.abort()
    await ws.wait_closed()


class Connexion(WebSocketServerProtocol):
    """Keeps what it receives; long messages by their length."""

    async def recv(self):
        message = await super().recv()
        self.__dict__.setdefault("recus", []).append(message if len(message) < 10000 else str(len(message)))
        return message

    async def process_request(self, chemin, _):
        if chemin.startswith("/refus/"):
            return http.HTTPStatus(int(chemin[7:10])), [], b'{"error":"Incorrect API key provided: cle-secrete."}'
        if chemin == "/grand/6000":
            self.transport.write = self.ensemble

    def ensemble(self, reponse):
        """Has the handshake's answer leave with the first message."""
        del self.transport.write
        ecrire = self.transport.write

        def suivre(message):
            self.transport.write = ecrire
            ecrire(reponse + message)

        self.transport.write = suivre


async def servir(ws, _):
    url = urllib.parse.urlsplit(ws.path)
    nom, *mots = url.path.strip("/").split("/")
    if nom == "v1":
        nom, mots = "realtime", urllib.parse.parse_qs(url.query)["model"]
    try:
        await globals()[nom](ws, *mots)
    except ConnectionClosed:
        pass
    finally:
        if url.query and not url.query.endswith("-reste"):
            print(json.dumps({"chemin": ws.path, "recus": getattr(ws, "recus", []), "code": ws.close_code,
                              "raison": ws.close_reason,
                              "entetes": {c.lower(): v for c, v in ws.request_headers.raw_items()}}), flush=True)


async def main(dossier):
    fabriquer(dossier)
    asyncio.get_running_loop().set_exception_handler(lambda *_: None)  # a refused certificate is no news
    ports = {}
    for nom, certificat in (("clair", None), ("tls", "localhost"), ("ailleurs", "ailleurs.example"),
                            ("perime", "perime")):
        contexte = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        if certificat:
            contexte.load_cert_chain(dossier / f"{certificat}.pem", dossier / f"{certificat}.key")
        serveur = await serve(
            servir, "127.0.0.1", 0, ssl=contexte if certificat else None, max_size=1 << 26, close_timeout=2,
            create_protocol=Connexion, ping_interval=None, compression=None,
            extra_headers={"Set-Cookie": "c" * 4000})
        ports[nom] = serveur.sockets[0].getsockname()[1]
    print(json.dumps({"pid": os.getpid(), "autorite": str(dossier / "ca.pem"), "ports": ports}), flush=True)
    await asyncio.sleep(600)


with tempfile.TemporaryDirectory() as nom:
    asyncio.run(main(pathlib.Path(nom)))
