#!/usr/bin/env python3
"""Every verb with arguments that are missing, unknown, of another type or hostile: hostile.py BOARD TABLE

TABLE is the table of verbs as it is printed. Each call gets a reply, a refusal its reason; nothing reaches a terminal
that was not named, no word is obeyed by tmux or a shell, and the board goes on.
"""
import http.client
import json
import pathlib
import re
import sys

from plateau import Plateau, egal

ORDRES = "; kill-server #{pane_id} #(touch x) $(touch x) `touch x` ../.. \x1b[2J\x07 %0 =plateau"
PROFOND = "x"
for _ in range(64):
    PROFOND = [PROFOND]
OCTETS = "octets"  # stands for bytes that are no UTF-8
VALEURS = (ORDRES, "--\0-t", "\ud800", OCTETS, "é" * 100_000, {"a": 1}, [-1], PROFOND, -1, 1e300, True)
# What a verb needs beside the argument that is tried. Nothing of it names the witness, who is the one looked at; codex
# is not there: opening an agent takes its time.
BONS = {"agent": "Merlin", "cible": "Merlin", "texte": "bonjour", "nom": "x", "cli": "codex", "prompt": "p", "commande": "true",
        "genre": "test", "timeout_s": "0", "touches": "haut", "noms": "a", "evenement": "fini", "destinataire": "Harfang",
        "raison": "r", "requete": "x"}
SERVICES = {"pourquoi": ["agent"], "journal": ["nombre"], "relais": ["agent", "evenement", "destinataire", "texte"],
            "eteindre": ["oui"]}
FERMENT = ("fermer", "fermer_tout")  # what is in view, when nothing is named
TEMOIN = "Milan"


def verbes(table):
    lus = dict(SERVICES)
    for ligne in pathlib.Path(table).read_text().splitlines():
        if ligne.startswith("## "):
            courant = lus[ligne[3:]] = []
        elif parametre := re.match(r"- `(\w+)` \((?:string|boolean)", ligne):
            courant.append(parametre[1])
    return lus


def appels(parametres, verbe):
    if verbe not in FERMENT:
        yield {}
    yield {"inconnu": ORDRES, **{p: ORDRES for p in parametres}}
    for parametre in parametres:
        for valeur in VALEURS:
            if (verbe, type(valeur)) not in (("eteindre", int), ("eteindre", float), ("eteindre", bool)):  # a yes
                yield {**{p: BONS[p] for p in parametres if p in BONS}, parametre: valeur}


def main():
    with Plateau(sys.argv[1], FACTICE_TOUR="0") as p:
        p.ouvrir()
        for _ in range(3):
            p.reussir("ouvrir_agent", cli="claude")
        p.reussir("focus", cible=TEMOIN)
        serveur, lien = p.serveur(), http.client.HTTPConnection("127.0.0.1", p.port, timeout=20)
        compte = recus = 0
        for verbe, parametres in verbes(sys.argv[2]).items():
            for arguments in appels(parametres, verbe):
                corps = json.dumps({"action": verbe, **arguments}).encode().replace(OCTETS.encode(), b"\xff\xfe\xc0")
                lien.request("POST", "/action", corps, {"Authorization": "Bearer " + p.jeton, "X-Tarnavelle-Patience": "1"})
                recue = lien.getresponse()
                octets = recue.read()
                reponse, quoi = json.loads(octets), (verbe, str(arguments)[:200], octets[:300])
                assert recue.status in (200, 400) and p.jeton.encode() not in octets and len(octets) < 1_000_000, quoi
                assert reponse["ok"] or reponse["error"], quoi
                if verbe != "diffuser":
                    egal(p.recus(TEMOIN)[recus:], [], quoi)
                compte += 1
            recus = len(p.recus(TEMOIN))
            noms = p.agents()
            assert {"Merlin", TEMOIN, "Harfang"} <= noms.keys(), (verbe, noms)
            for nom in noms.keys() - {"Merlin", TEMOIN, "Harfang"}:
                p.reussir("fermer", cible=nom)
            p.reussir("focus", cible=TEMOIN)
        egal((p.serveur(), p.erreurs.read_text()), (serveur, ""))
        egal([str(f) for f in p.dossier.rglob("x")], [])
        print(f"{compte} appels")


main()
