#!/usr/bin/env python3
"""WebSocket servers of another library than the client's; the path of an address chooses what they do.

Prints one line of JSON that tells where they listen, then what it saw of each connection whose address
has a query that does not end with "-reste". Ends with SIGTERM, or after ten minutes.
"""
import asyncio
import base64
import hashlib
import http
import json
import os
import pathlib
import ssl
import sys
import tempfile
import urllib.parse

import websockets

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from autorite import fabriquer

SON = base64.b64encode(bytes(range(48))).decode()


def dire(objet):
    print(json.dumps(objet, ensure_ascii=False), flush=True)


# --- What a WebSocket may meet ---------------------------------------------------------------------------

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


async def ping(ws):
    await (await ws.ping(b"es-tu la ?"))
    await ws.send("pong")
    await ws.wait_closed()


async def coupe(ws):
    """Ends in the middle of a frame."""
    await ws.send("avant")
    ws.transport.write(b"\x81\x7e\x10\x00abc")
    ws.transport.close()


async def arrache(ws):
    await ws.send("avant")
    await asyncio.sleep(0.05)
    ws.transport.abort()


async def invalide(ws):
    """A text frame that is not UTF-8, then a reserved opcode."""
    ws.transport.write(b"\x81\x02\xff\xfe" if ws.path.endswith("texte") else b"\x83\x00")
    await ws.wait_closed()


async def ferme(ws):
    await ws.close(3000, "invalid_request_error.invalid_api_key")


async def congedie(ws, fois):
    """Speaks, says why it leaves, and is gone before the client has answered."""
    ws.transport.write(b"\x81\x02un" * int(fois) + b"\x88\x06\x0b\xb8non!")
    ws.transport.close()


async def sourd(ws):
    """Neither reads nor speaks."""
    ws.transport.pause_reading()
    await asyncio.sleep(60)


async def bavard(ws):
    """Speaks and does not read."""
    ws.transport.pause_reading()
    while True:
        await ws.send("encore")
        await asyncio.sleep(0.02)


# --- Sessions of a realtime service ----------------------------------------------------------------------

def appel(dialecte, nom, identifiant):
    """The one event by which a dialect tells a call, after one that is not it."""
    fini = {"type": "response.function_call_arguments.done", "name": nom, "arguments": "{\"n\":1}",
            "call_id": identifiant}
    element = {"type": "response.output_item.done",
               "item": {"type": "function_call", "name": nom, "arguments": "{\"n\":1}", "call_id": identifiant}}
    return [fini, element] if dialecte == "openai" else [element, fini]


async def realtime(ws, modele):
    dialecte, _, suite = modele.partition("-")

    async def dire_tout(*evenements):
        for evenement in evenements:
            await ws.send(json.dumps(evenement))

    async def attendre(genre):
        while json.loads(await ws.recv())["type"] != genre:
            pass

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
        {"type": "response.output_audio.delta", "delta": SON},
        *appel(dialecte, "focus", "a"), {"type": "response.audio.delta", "delta": SON},
        *appel(dialecte, "lire", "b"), *appel(dialecte, "etat", "c"),
        {"type": "response.done", "response": {"usage": {"input_token_details": {"cached_tokens": 7}}}})
    await attendre("response.create")
    await attendre("session.update")
    await dire_tout({"type": "session.updated"})
    if suite == "chute":
        ws.transport.abort()
    await ws.wait_closed()


# --- The servers -----------------------------------------------------------------------------------------

class Connexion(websockets.WebSocketServerProtocol):
    """Keeps what it receives; long messages by their length."""

    async def recv(self):
        message = await super().recv()
        self.__dict__.setdefault("recus", []).append(message if len(message) < 10000 else str(len(message)))
        return message


async def servir(ws, _=None):
    url = urllib.parse.urlsplit(ws.path)
    nom, *mots = url.path.strip("/").split("/")
    if nom == "v1":
        nom, mots = "realtime", urllib.parse.parse_qs(url.query)["model"]
    try:
        await globals()[nom](ws, *mots) if nom in ("congedie", "grand", "realtime") else await globals()[nom](ws)
    except websockets.ConnectionClosed:
        pass
    finally:
        if url.query and not url.query.endswith("-reste"):
            dire({"chemin": ws.path, "recus": getattr(ws, "recus", []), "code": ws.close_code,
                  "raison": ws.close_reason,
                  "entetes": {c.lower(): v for c, v in ws.request_headers.raw_items()}})


async def refuser(chemin, _):
    if chemin.startswith("/refus/"):
        return http.HTTPStatus(int(chemin[7:10])), [], b'{"error":"Incorrect API key provided: cle-secrete."}\n'


async def rapide(lecteur, ecrivain):
    """Answers with long headers and the first message in one write."""
    demande = await lecteur.readuntil(b"\r\n\r\n")
    cle = demande.partition(b"Sec-WebSocket-Key: ")[2].partition(b"\r\n")[0]
    preuve = base64.b64encode(hashlib.sha1(cle + b"258EAFA5-E914-47DA-95CA-C5AB0DC85B11").digest())
    ecrivain.write(b"HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                   b"Set-Cookie: " + b"c" * 4000 + b"\r\nSec-WebSocket-Accept: " + preuve + b"\r\n\r\n"
                   b"\x81\x7e" + (6000).to_bytes(2, "big") + b"r" * 6000)
    await lecteur.read()
    ecrivain.close()


async def main(dossier):
    def contexte(nom):
        c = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        c.load_cert_chain(dossier / f"{nom}.pem", dossier / f"{nom}.key")
        return c

    fabriquer(dossier)
    asyncio.get_running_loop().set_exception_handler(lambda *_: None)  # a refused certificate is no news
    ports = {"rapide": (await asyncio.start_server(rapide, "127.0.0.1", 0)).sockets[0].getsockname()[1]}
    for nom, certificat in (("clair", None), ("tls", "localhost"), ("ailleurs", "ailleurs.example"),
                            ("perime", "perime")):
        serveur = await websockets.serve(
            servir, "127.0.0.1", 0, ssl=contexte(certificat) if certificat else None, max_size=1 << 26,
            create_protocol=Connexion, process_request=refuser, ping_interval=None, compression=None,
            close_timeout=2)
        ports[nom] = serveur.sockets[0].getsockname()[1]
    dire({"pid": os.getpid(), "autorite": str(dossier / "ca.pem"), "ports": ports})
    await asyncio.sleep(600)


with tempfile.TemporaryDirectory() as nom:
    asyncio.run(main(pathlib.Path(nom)))
