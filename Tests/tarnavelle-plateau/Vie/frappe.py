#!/usr/bin/env python3
"""Instructions of 1 byte to 200 kB typed into 8 programs at once: frappe.py BOARD [HOW MANY]

Among them programs that are busy, that draw late, that open dialogs, whose turn is cut short by Esc, commands of the
programs' own (`!`, `/`), and a person who types into the same box. Each instruction is to be received whole, once
and in order, or refused by name: what the door says of it is held against what the program was given. HOW MANY, or
TARNAVELLE_FRAPPES, is 40 by default.
"""
import collections
import os
import random
import subprocess
import sys
import threading
import time

from plateau import Plateau, egal

FRAPPES = int(sys.argv[2] if len(sys.argv) > 2 else os.environ.get("TARNAVELLE_FRAPPES", "40"))
GRAINE = int(os.environ.get("TARNAVELLE_GRAINE", random.SystemRandom().randrange(10**6)))
PROGRAMMES = 8
LETTRES = "abcdefghij klmno pqrst éàùç 漢字 🙂 \"'`$#{};\\\n\t"


def texte(hasard, marque):
    """Any characters, any length; the mark tells which one it is."""
    taille = int(10 ** hasard.uniform(0, 5.3))
    debut = hasard.choice(["", "", "", "", "", "!", "/", "dialogue ", "travaille 0.4 ", "travaille 0.4 "])
    corps = "".join(hasard.choices(LETTRES, k=min(taille, 400)))
    corps = (corps * (taille // max(1, len(corps)) + 1))[:taille]
    return f"{debut}{marque} {corps}".rstrip() + "."


class Frappeur(threading.Thread):
    """One caller of one agent."""

    def __init__(self, plateau, nom, combien, hasard):
        super().__init__(daemon=True)
        self.plateau, self.nom, self.combien, self.hasard = plateau, nom, combien, hasard
        self.dits, self.durees, self.erreurs = [], [], []

    def run(self):
        try:
            for n in range(self.combien):
                self.frapper(f"<{self.nom}-{n}>")
        except Exception as e:  # noqa: BLE001 - a thread's failure is the test's
            self.erreurs.append(repr(e))

    def touches(self, touches):
        return self.plateau.appeler("envoyer_touches", agent=self.nom, touches=touches)

    def frapper(self, marque):
        consigne = texte(self.hasard, marque)
        personne = self.hasard.random() < 0.08
        if personne:  # somebody is at that terminal
            self.plateau.tmux("send-keys", "-t", f"={self.session}:", "-l", "je tape")
        debut = time.monotonic()
        reponse = self.plateau.appeler("dicter", agent=self.nom, texte=consigne)
        self.durees.append((len(consigne.encode()), time.monotonic() - debut))
        donnees = reponse.get("data", {})
        self.dits.append((marque, consigne, donnees.get("livraison"), donnees.get("raison", reponse.get("error"))))
        if donnees.get("livraison") in ("pose", "inconnu") or personne:
            self.touches("ctrl+u")
        if consigne.startswith("dialogue "):
            besoin = self.plateau.appeler("attendre", agent=self.nom, jusqu_a="besoin", timeout_s="5", patience=10)
            if besoin["data"]["atteint"] and self.hasard.random() < 0.7:
                # The next one meets the dialog.
                refus = self.plateau.appeler("dicter", agent=self.nom, texte="jamais tapé")
                if refus["ok"] or refus["data"]["livraison"] != "refuse":
                    self.erreurs.append(f"{marque} : un dialogue était ouvert, et {refus}")
            self.touches(self.hasard.choice(["1", "entree", "esc"]))
        elif self.hasard.random() < 0.1:
            self.touches("esc")


def juger(frappeur):
    """What the program was given, against what the door said."""
    # A name that would open a menu is typed with a blank after it.
    recus = [r.rstrip(" ") for r in frappeur.plateau.recus(frappeur.nom)]
    for marque, consigne, livraison, raison in frappeur.dits:
        fois = [r for r in recus if marque in r]
        if livraison == "soumis":
            assert fois == [consigne], (marque, "dit soumis", len(fois), [len(f) for f in fois], len(consigne),
                                        [f[:60] for f in fois], consigne[:60])
        elif livraison == "refuse":
            assert not fois and raison, (marque, "dit refusé", raison, len(fois))
        else:
            assert len(fois) <= 1, (marque, livraison, len(fois))
    soumis = [c for _, c, livraison, _ in frappeur.dits if livraison == "soumis"]
    egal([r for r in recus if r in set(soumis)], soumis, frappeur.nom, "ordre")
    assert "jamais tapé" not in recus, frappeur.nom
    assert not frappeur.erreurs, frappeur.erreurs[:3]


def main():
    hasard = random.Random(GRAINE)
    print(f"graine {GRAINE}", flush=True)
    with Plateau(sys.argv[1], FACTICE_LENT="0.15", FACTICE_TOUR="0.1") as plateau:
        plateau.ouvrir()
        frappeurs = []
        for n in range(PROGRAMMES):
            fiche = plateau.reussir("ouvrir_agent", cli="claude")["data"]
            combien = FRAPPES // PROGRAMMES + (n < FRAPPES % PROGRAMMES)
            frappeurs.append(Frappeur(plateau, fiche["nom"], combien, random.Random(hasard.random())))
            frappeurs[-1].session = fiche["tmux"]
        debut = time.monotonic()
        for f in frappeurs:
            f.start()
        for f in frappeurs:
            f.join()
        duree = time.monotonic() - debut
        for f in frappeurs:
            juger(f)
        sorts = collections.Counter((l, r) if l != "soumis" else (l, "") for f in frappeurs for _, _, l, r in f.dits)
        durees = sorted(d for f in frappeurs for _, d in f.durees)
        octets = sum(o for f in frappeurs for o, _ in f.durees)
        print(f"{sum(sorts.values())} consignes, {octets / 1e6:.1f} Mo en {duree:.0f} s ; "
              f"médiane {durees[len(durees) // 2] * 1e3:.0f} ms, max {durees[-1] * 1e3:.0f} ms")
        for (sort, raison), fois in sorts.most_common():
            print(f"  {fois:5} {sort or 'sans livraison'} {raison}")


main()
