#!/usr/bin/env python3
"""A full-screen program that looks to the board like claude, fires its hooks, and keeps what it was given.

In the folder FACTICE it appends to <name>.jsonl one line for each text that it received whole ("recu"), each start
("demarre", with the conversation's id and "jeton", what it may call the door with) and each end. What a text begins with decides what it does: "travaille S",
"dialogue", "laisse", "sors N", "deluge". FACTICE_LENT: it redraws up to that many seconds late.
"""
import json
import os
import pathlib
import random
import select
import signal
import subprocess
import sys
import termios
import time
import tty
import unicodedata
import uuid

NOM = os.environ.get("TARNAVELLE_NODE_ID", "?")
JOURNAL = pathlib.Path(os.environ["FACTICE"], NOM + ".jsonl")
CONVERSATIONS = pathlib.Path(os.environ["FACTICE"], "conversations")
LENT = float(os.environ.get("FACTICE_LENT", "0"))
TOUR = float(os.environ.get("FACTICE_TOUR", "0.05"))
CTRL_C, CTRL_U, ECHAP, ENTREE = b"\x03", b"\x15", b"\x1b", b"\r"
DEBUT, FIN = b"\x1b[200~", b"\x1b[201~"


def noter(**fait):
    with open(JOURNAL, "ab", buffering=0) as journal:
        journal.write(json.dumps({"quand": time.time(), **fait}).encode() + b"\n")


def largeur(texte):
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in texte)


class Agent:
    def __init__(self, mots):
        self.crochets = {}
        options = dict(zip(mots, mots[1:]))
        if "--settings" in options:
            for nom, groupes in json.loads(pathlib.Path(options["--settings"]).read_text())["hooks"].items():
                self.crochets[nom] = groupes[0]["hooks"][0]["command"]
        self.conversation = options.get("--session-id") or options.get("--resume") or str(uuid.uuid4())
        # The real one knows no conversation in which nothing was said, and begins none twice.
        dites = CONVERSATIONS.read_text().split() if CONVERSATIONS.exists() else []
        if self.conversation in dites and "--session-id" in options:
            sys.exit("Session ID is already in use.")
        if self.conversation not in dites and "--resume" in options:
            sys.exit("No conversation found with that session ID.")
        self.boite, self.colles = "", []  # what the box holds; the pastes that it shows as a mark
        self.tour, self.jusqua, self.enfile = None, 0.0, 0
        self.dialogue = self.deluge = False
        self.transcript = ["Claude Code v9.9.9 (factice)"]
        self.reste = b""
        self.dessin = 0.0
        noter(demarre=self.conversation, jeton=os.environ.get("TARNAVELLE_CONTROL_TOKEN"))
        self.accrocher("SessionStart", source="startup")

    def accrocher(self, nom, **dit):
        if nom not in self.crochets:
            return
        dit = {"hook_event_name": nom, "session_id": self.conversation, **dit}
        if self.tour:
            dit["prompt_id"] = self.tour
        subprocess.run(["sh", "-c", self.crochets[nom]], input=json.dumps(dit).encode(), stdout=subprocess.DEVNULL,
                       stderr=subprocess.DEVNULL)

    # What is typed.

    def entier(self):
        """The text of the box, its marks in full."""
        texte = self.boite
        for n, colle in enumerate(self.colles):
            texte = texte.replace(f"\0{n}\0", colle)
        return texte

    def montre(self):
        texte = self.boite
        for n, colle in enumerate(self.colles):
            lignes = colle.count("\n")
            texte = texte.replace(f"\0{n}\0", f"[Pasted text #{n + 1}" + (f" +{lignes} lines]" if lignes else "]"))
        return texte.replace("\t", "    ")

    def coller(self, texte):
        if self.dialogue:
            return noter(avale=texte[:80])
        if len(texte) > 800 or texte.count("\n") > 5:
            self.boite += f"\0{len(self.colles)}\0"
            self.colles.append(texte)
        else:
            self.boite += texte

    def vider(self):
        self.boite, self.colles = "", []

    def soumettre(self):
        texte = self.entier()
        self.vider()
        if not texte.strip():
            return
        noter(recu=texte)
        with open(CONVERSATIONS, "a") as dites:
            dites.write(self.conversation + "\n")
        self.transcript.append("❯ " + texte[:150].split("\n")[0])
        if texte.startswith(("/", "!")):
            self.transcript.append("● Unknown slash command" if texte[0] == "/" else "● shell")
            return
        if self.tour:
            self.enfile += 1
            return self.accrocher("UserPromptSubmit", prompt=texte[:200])
        self.commencer(texte)

    def commencer(self, texte, annonce=True):
        self.tour = str(uuid.uuid4())
        mots = texte.split() or [""]
        if annonce:
            self.accrocher("UserPromptSubmit", prompt=texte[:200])
        self.jusqua = time.monotonic() + (float(mots[1]) if mots[0] == "travaille" else TOUR)
        if mots[0] == "laisse":  # as a tool that runs in a session of its own
            noter(laisse=subprocess.Popen(["sleep", "600"], start_new_session=True).pid)
        if mots[0] == "sors":
            quitter(int(mots[1]))
        self.deluge = mots[0] == "deluge"
        if mots[0] == "dialogue":
            self.accrocher("PermissionRequest", tool_name="Bash")
            self.dialogue = True

    def finir(self, evenement="Stop"):
        self.deluge = False
        if evenement:
            self.accrocher(evenement, last_assistant_message="fait")
        self.transcript.append("● fait" if evenement else "  ⎿  Interrupted · What should Claude do instead?")
        self.tour = None
        if self.enfile:  # queued texts are one turn, which no submission announces
            self.enfile = 0
            self.commencer("", annonce=False)

    def touche(self, touche):
        if self.dialogue:
            if touche in (b"1", b"y", ENTREE, ECHAP):
                self.dialogue = False
                noter(reponse=touche.decode())
                if touche == ECHAP:
                    self.finir(None)
        elif touche == ENTREE:
            self.soumettre()
        elif touche == ECHAP:
            if self.tour:
                self.enfile = 0
                self.finir(None)
        elif touche == CTRL_U or touche == CTRL_C:
            self.vider()
        elif touche == b"\n" or touche >= b" ":
            self.boite += touche.decode("utf-8", "replace")

    def lire(self, octets):
        """Keys and pastes, whatever the pieces they come in."""
        self.reste += octets
        while self.reste:
            if self.reste.startswith(DEBUT):
                fin = self.reste.find(FIN)
                if fin < 0:
                    return
                self.coller(self.reste[len(DEBUT):fin].decode("utf-8", "replace"))
                self.reste = self.reste[fin + len(FIN):]
            elif self.reste.startswith(FIN):  # of no paste: the real ones pass over it
                self.reste = self.reste[len(FIN):]
            elif DEBUT.startswith(self.reste[:len(DEBUT)]) and len(self.reste) > 1:
                return
            else:
                n = 1
                while n < len(self.reste) and self.reste[n] & 0xC0 == 0x80:
                    n += 1
                self.touche(self.reste[:n])
                self.reste = self.reste[n:]

    # What is shown.

    def dessiner(self):
        try:
            colonnes, lignes = os.get_terminal_size()
        except OSError:
            quitter(0)
        filet = "─" * min(colonnes, 80)
        if self.dialogue:
            bas = [filet, " Bash command", " Do you want to proceed?", " ❯ 1. Yes", "   2. No", "",
                   " Esc to cancel · Tab to amend"]
        else:
            place, dites = colonnes - 4, []
            for ligne in self.montre().split("\n"):
                while largeur(ligne) > place:
                    dites.append(ligne[:place // 2])
                    ligne = ligne[place // 2:]
                dites.append(ligne)
            dites = dites[-max(1, lignes - 12):]
            boite = ["❯\u00a0" + dites[0]] + ["  " + d for d in dites[1:]]
            travail = (["  ⎿  Queued"] if self.enfile else []) + ["✻ Tournant…", ""] if self.tour else []
            pied = "  ⏸ manual mode on" + (" · esc to interrupt" if self.tour and not self.boite else " · ? for shortcuts")
            bas = travail + [filet] + boite + [filet, pied]
        haut = self.transcript[-(lignes - len(bas) - 1):]
        ecran = "\x1b[H" + "".join(l + "\x1b[K\r\n" for l in haut + [""] + bas) + "\x1b[J"
        sys.stdout.write(ecran)
        sys.stdout.flush()

    def vivre(self):
        a_dessiner = True
        while True:
            maintenant = time.monotonic()
            if self.tour and not self.dialogue and maintenant >= self.jusqua and not self.deluge:
                self.finir()
                a_dessiner = True
            if a_dessiner and maintenant >= self.dessin:
                self.dessiner()
                a_dessiner = False
            echeance = self.jusqua - maintenant if self.tour and not self.dialogue else 3600
            if a_dessiner:
                echeance = min(echeance, self.dessin - maintenant)
            if self.deluge:
                sys.stdout.write("y\r\n" * 2000)
                sys.stdout.flush()
                echeance = 0
            if select.select([0], [], [], max(0, echeance))[0]:
                octets = os.read(0, 65536)
                if not octets:
                    quitter(0)
                self.lire(octets)
                if not a_dessiner and LENT:
                    self.dessin = time.monotonic() + random.random() * LENT
                a_dessiner = True


def quitter(statut):
    noter(fin=statut)
    sys.stdout.write("\x1b[?2004l\x1b[?1049l")
    sys.stdout.flush()
    os._exit(statut)


def main():
    for signe in (signal.SIGHUP, signal.SIGTERM):
        signal.signal(signe, lambda *_: quitter(0))
    if "FACTICE_SORS" in os.environ and pathlib.Path(os.environ["FACTICE_SORS"]).exists():
        print("je ne reste pas")
        quitter(3)
    tty.setraw(0)
    sys.stdout.write("\x1b[?1049h\x1b[?2004h")
    Agent(sys.argv[1:]).vivre()


main()
