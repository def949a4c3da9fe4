#!/usr/bin/env python3
"""Streams of events as good and bad servers send them; the path /FRAMING/SCENARIO/N/... chooses what happens.

Each connection to one path plays the scenario's next act, and the last one again from then on. Prints one
line of JSON that tells where the servers listen. Ends with SIGTERM, or after ten minutes.
"""
import asyncio
import collections
import gzip
import json
import logging
import os
import pathlib
import signal
import socket
import ssl
import struct
import sys
import tempfile

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from autorite import fabriquer


def data(**objet):
    return "data: " + json.dumps(objet)


def ntfy(**objet):
    return data(topic="abcdefghijklmnopqrst-_", time=1700000000, **objet)


def morceau(texte):
    return data(choices=[{"index": 0, "delta": {"content": texte}}])


OUVRE, VIE = ntfy(event="open"), "event: keepalive\n" + ntfy(event="keepalive")
A, B, C = (ntfy(event="message", id=i, message=i.upper() + " é") for i in "abc")
OUTIL = data(type="tool.start", name="lire", input={"path": "/p"})
FIN = "data: [DONE]"
SANS_FIN = [b"data: " + b"x" * 65536, b"x" * 65536]  # the second one until the client leaves
GZIP = [{"Content-Encoding": "gzip"}, gzip.compress((OUVRE + "\n\n" + morceau("a") + "\n\n").encode())]

# In an act: a number is the status, a dictionary headers, a text an event, bytes go as they are, a decimal is a
# pause in seconds, None breaks the connection, ... is silence until the client leaves. The end is orderly.
SCENARIOS = {
    "400": [[400]], "401": [[401]], "403": [[403]], "404": [[404]], "422": [[422]],
    "429": [[429], [403]], "500": [[500], [403]],
    "refuse": [[OUVRE], [400], [OUVRE, A], [403]],
    "coupe": [[OUVRE, A, B[:60].encode(), None], [OUVRE, A, A, B, C], [B, C], [403]],
    "muette": [[OUVRE, ...], [403]],
    "vies": [[OUVRE] + 5 * [0.2, ": rien", VIE], [403]],
    "sans-fin": [[OUVRE, *SANS_FIN], [403]],
    "comprime": [GZIP, [403]],
    "ouverte": [[OUVRE, ...]],
    "tour": [[": x", morceau("a é"), OUTIL, morceau("b"), FIN, morceau("c")]],
    "tronque": [[morceau("a")]],
    "coupe-texte": [[morceau("a"), morceau("b")[:20].encode(), None]],
    "coupe-outil": [[OUTIL, b"data", None]],
    "muet": [[morceau("a"), ...]],
    "bavard": [[*SANS_FIN]],
}
actes = collections.Counter()


class Sortie:
    """The body of an answer, in one of the framings."""

    def __init__(self, ecrivain, cadre):
        self.ecrivain, self.chunked, self.un = ecrivain, cadre.startswith("chunked"), cadre.endswith("1")

    async def entete(self, statut, entetes):
        if self.chunked:
            entetes = {**entetes, "Transfer-Encoding": "chunked"}
        entetes = {"Content-Type": "text/event-stream", **entetes}
        lignes = [f"HTTP/1.1 {statut} x", *(f"{nom}: {valeur}" for nom, valeur in entetes.items())]
        self.ecrivain.write("\r\n".join([*lignes, "", ""]).encode())

    async def envoyer(self, octets):
        for morceau in (octets[i:i + 1] for i in range(len(octets))) if self.un else [octets]:
            self.ecrivain.write(b"%x\r\n%s\r\n" % (len(morceau), morceau) if self.chunked else morceau)
            await self.ecrivain.drain()

    async def finir(self):
        if self.chunked:
            self.ecrivain.write(b"0\r\n\r\n")
        self.ecrivain.close()


async def jouer(lecteur, ecrivain, acte, sortie):
    statut = next((x for x in acte if isinstance(x, int)), 200)
    await sortie.entete(statut, next((x for x in acte if isinstance(x, dict)), {}))
    for x in acte:
        if isinstance(x, str):
            await sortie.envoyer((x + "\n\n").encode())
        elif x is SANS_FIN[1]:
            while not ecrivain.is_closing():
                await sortie.envoyer(x)
        elif isinstance(x, bytes):
            await sortie.envoyer(x)
        elif isinstance(x, float):
            await asyncio.sleep(x)
        elif x is None:
            await asyncio.sleep(0.05)
            connexion = ecrivain.get_extra_info("socket")
            connexion.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))  # no farewell
            return ecrivain.transport.abort()
        elif x is ...:
            await lecteur.read()
    await sortie.finir()


async def servir(lecteur, ecrivain):
    try:
        tete = (await lecteur.readuntil(b"\r\n\r\n")).decode()
        longueur = next(l for l in tete.splitlines() if l.lower().startswith("content-length:"))
        await lecteur.readexactly(int(longueur.split(":")[1]))
        chemin = tete.split()[1].split("?")[0]
        _, cadre, scenario, *_ = chemin.split("/")
        lieu = ecrivain.get_extra_info("sockname")[1], chemin
        rang = min(actes[lieu], len(SCENARIOS[scenario]) - 1)
        actes[lieu] += 1
        await jouer(lecteur, ecrivain, SCENARIOS[scenario][rang], Sortie(ecrivain, cadre))
    except (ConnectionError, asyncio.IncompleteReadError, ssl.SSLError):
        pass
    finally:
        ecrivain.close()


async def main():
    with tempfile.TemporaryDirectory() as nom:
        dossier = pathlib.Path(nom)
        fabriquer(dossier)
        ports = {}
        for serveur in ("clair", "localhost", "ailleurs.example", "perime"):
            contexte = None
            if serveur != "clair":
                contexte = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
                contexte.load_cert_chain(dossier / f"{serveur}.pem", dossier / f"{serveur}.key")
            ecoute = await asyncio.start_server(servir, "127.0.0.1", 0, ssl=contexte, backlog=1000)
            ports[serveur] = ecoute.sockets[0].getsockname()[1]
        arret = asyncio.Event()
        asyncio.get_running_loop().add_signal_handler(signal.SIGTERM, arret.set)
        print(json.dumps({"pid": os.getpid(), "autorite": str(dossier / "ca.pem"), "ports": ports}), flush=True)
        try:
            await asyncio.wait_for(arret.wait(), 600)
        except asyncio.TimeoutError:
            pass


logging.disable()  # refused handshakes and abrupt ends are what this is about
asyncio.run(main())
