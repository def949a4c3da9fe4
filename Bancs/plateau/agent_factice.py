#!/usr/bin/env python3
"""An agent program for the board's bench: claude's screen, drawn again and again, its box and its hooks.

It draws above its box at a rate that is set at will, takes what is typed into the box, and notes when. It is
driven by datagrams on a socket in BANC_PRISES, each answered by a moment of CLOCK_MONOTONIC in nanoseconds, or
by several: "rythme N" (redraws a second), "motif X" (X on the screen), "tour", "besoin" and "fin" (the hooks of a turn),
"recus" (when Enter was pressed, and how many bytes it submitted).
"""
import json
import os
import re
import select
import signal
import socket
import sys
import time
import tty
from pathlib import Path

LIGNES, COLONNES = 50, 200
REGLE = "─" * COLONNES
CROCHETS = {"tour": "UserPromptSubmit", "besoin": "PermissionRequest", "fin": "Stop"}
DEBUT, FIN = b"\x1b[200~", b"\x1b[201~"


class Agent:
    def __init__(self):
        self.nom = os.environ.get("TARNAVELLE_NODE_ID") or str(os.getpid())
        self.boite, self.recus, self.motif = b"", [], ""
        self.rythme, self.dessins = float(os.environ.get("BANC_RYTHME", "10")), 0
        self.tour = 0
        self.colle = None  # bytes of a paste whose end has not come
        chemin = os.path.join(os.environ["BANC_PRISES"], self.nom)
        Path(chemin).unlink(missing_ok=True)
        self.prise = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.prise.bind(chemin)

    def crochet(self, evenement):
        journal = os.environ.get("TARNAVELLE_CROCHETS")
        self.tour += evenement == "UserPromptSubmit"
        if journal:
            ligne = json.dumps({"hook_event_name": evenement, "session_id": "s", "prompt_id": str(self.tour)})
            with open(journal, "a", encoding="utf-8") as f:
                f.write(ligne + "\n")
        return time.monotonic_ns()

    def ecrire(self, texte):
        octets = texte.encode()
        while octets:
            octets = octets[os.write(1, octets) :]
        return time.monotonic_ns()

    def montrer_boite(self):
        texte = self.boite.decode(errors="replace")
        if texte.count("\n") > 2 or len(texte) > 800:
            texte = f"[Pasted text #1 +{texte.count(chr(10))} lines]"
        lignes = ["❯\xa0" + texte.split("\n")[0]] + ["  " + suite for suite in texte.split("\n")[1:]]
        bas = [REGLE, *(bout for ligne in lignes for bout in decouper(ligne)), REGLE, "  ? for shortcuts"]
        haut = LIGNES - len(bas)
        self.ecrire("".join(f"\x1b[{haut + i};1H\x1b[K{ligne}" for i, ligne in enumerate(bas)))

    def dessiner(self):
        self.dessins += 1
        corps = "".join(f"\x1b[{2 + i};1H\x1b[K  {self.nom} ligne {self.dessins + i}" for i in range(10))
        self.ecrire(f"{corps}\x1b[20;1H\x1b[K{self.motif}")

    def clavier(self, octets):
        if self.colle is not None:
            octets, self.colle = self.colle + octets, None
        while octets:
            if octets.startswith(DEBUT):
                fin = octets.find(FIN)
                if fin < 0:
                    self.colle = octets
                    return
                self.boite += octets[len(DEBUT) : fin].replace(b"\r", b"\n")
                octets = octets[fin + len(FIN) :]
            elif octets[:1] == b"\r":
                self.recus.append([time.monotonic_ns(), len(self.boite)])
                self.boite, octets = b"", octets[1:]
                self.crochet("UserPromptSubmit")
                self.crochet("Stop")
            else:
                self.boite, octets = (b"" if octets[:1] == b"\x15" else self.boite + octets[:1]), octets[1:]
        self.montrer_boite()

    def ordre(self, mots):
        if mots[0] == "rythme":
            self.rythme = float(mots[1])
            return time.monotonic_ns()
        if mots[0] == "motif":
            self.motif = mots[1]
            return self.ecrire(f"\x1b[20;1H\x1b[K{self.motif}")
        if mots[0] in CROCHETS:
            return self.crochet(CROCHETS[mots[0]])
        return self.recus

    def vivre(self):
        tty.setraw(0)
        self.ecrire("\x1b[2J\x1b[?2004h")
        self.montrer_boite()
        self.crochet("SessionStart")
        prochain = time.monotonic()
        while True:
            attente = max(0.0, prochain - time.monotonic()) if self.rythme else None
            prets, _, _ = select.select([0, self.prise], [], [], attente)
            if 0 in prets:
                octets = os.read(0, 1 << 16)
                if not octets:
                    return
                self.clavier(octets)
            if self.prise in prets:
                message, qui = self.prise.recvfrom(4096)
                self.prise.sendto(json.dumps(self.ordre(message.decode().split(" ", 1))).encode(), qui)
            if self.rythme and time.monotonic() >= prochain:
                self.dessiner()
                prochain = time.monotonic() + 1 / self.rythme


def decouper(ligne):
    return re.findall(f".{{1,{COLONNES}}}", ligne) or [""]


if __name__ == "__main__":
    for fin in (signal.SIGTERM, signal.SIGHUP):
        signal.signal(fin, lambda *_: sys.exit(0))
    Agent().vivre()
