#!/usr/bin/env python3
"""Plays recorded sessions against the real bridge, with no door: sessions.py BRIDGE

A session is a text file whose lines are
    # a comment; the first one names the fault the session guards against
    > what the client writes, a line feed being added
    < the reply line the bridge must write, byte for byte
and ">x" or "<x" instead of ">" or "<" when the line holds Python's escapes for bytes, or \\{512 [} for
512 times "[". ">x" adds no line feed, "<x" does.
The whole input is written at once, then closed: the bridge must answer all of it, nothing more, and
end with status 0. The same when TARNAVELLE_MCP_ETENDU is set to anything but "1"; the sessions in "etendu" are
played with "1".
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile


def developper(texte):
    texte = re.sub(rb"\\\{(\d+) ([^}]+)\}", lambda trouve: trouve[2] * int(trouve[1]), texte)
    return texte.decode("unicode_escape").encode("latin-1")


def lire(chemin):
    """The bytes to write, and the expected replies with the number of the line each stands on."""
    entree, attendues = b"", []
    for numero, ligne in enumerate(chemin.read_bytes().split(b"\n"), 1):
        genre, _, texte = ligne.partition(b" ")
        if genre == b">":
            entree += texte + b"\n"
        elif genre == b">x":
            entree += developper(texte)
        elif genre == b"<":
            attendues.append((numero, texte))
        elif genre == b"<x":
            attendues.append((numero, developper(texte)))
        elif ligne and not ligne.startswith(b"#"):
            raise ValueError(f"{chemin.name}:{numero}: ligne sans genre")
    return entree, attendues


def jouer(pont, chemin, etendu=None):
    """What is wrong with the bridge's answers, as a list of French sentences."""
    entree, attendues = lire(chemin)
    with tempfile.TemporaryDirectory() as maison:
        environnement = {k: v for k, v in os.environ.items() if not k.startswith("TARNAVELLE")}
        # The bridge reads no argument, be it one that other programs know.
        fait = subprocess.run([pont, "--version"], input=entree, stdout=subprocess.PIPE, timeout=60,
                              env=environnement | {"HOME": maison} | ({"TARNAVELLE_MCP_ETENDU": etendu} if etendu else {}))
    *recues, reste = fait.stdout.split(b"\n")
    ennuis = [f"ligne {numero}\n    attendu : {attendue[:400]}\n    reçu    : {recue[:400]}"
              for (numero, attendue), recue in zip(attendues, recues) if attendue != recue]
    if len(attendues) != len(recues) or reste:
        ennuis.append(f"{len(attendues)} réponses attendues, {len(recues)} reçues, puis {reste[:400]}")
    if fait.returncode != 0:
        ennuis.append(f"statut de sortie {fait.returncode}")
    return ennuis


def main():
    dossier = pathlib.Path(__file__).with_name("sessions")
    chemins = sorted(dossier.glob("*.txt"))
    ennuis = {f"{chemin.name} {valeur or ''}": jouer(sys.argv[1], chemin, valeur)
              for valeur in (None, "0", "true", " 1", "11") for chemin in chemins}
    for chemin in sorted(dossier.glob("etendu/*.txt")):
        ennuis[f"etendu/{chemin.name}"] = jouer(sys.argv[1], chemin, "1")
    for nom, liste in ennuis.items():
        print(f"{'ÉCHEC' if liste else 'ok   '} {nom}", *(f"  {e}" for e in liste), sep="\n")
    return 1 if any(ennuis.values()) or not chemins else 0


sys.stdout.reconfigure(encoding="utf-8", errors="backslashreplace")
sys.exit(main())
