#!/usr/bin/env python3
"""Plays recorded sessions against the real bridge, with no door: sessions.py BRIDGE [SESSION...]

A session is a text file whose lines are
    # a comment; the first one names the fault the session guards against
    > what the client writes, a line feed being added
    < the reply line the bridge must write, byte for byte
and ">x" or "<x" instead of ">" or "<" when the line holds escapes: \\xff one byte, \\n, \\r, \\t, \\\\,
and \\{512 [} for 512 times "[". ">x" adds no line feed, "<x" does.
The whole input is written at once, then closed: the bridge must answer all of it, nothing more, and
end with status 0. Without SESSION, every file of the folder "sessions" is played.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile

ECHAPPEMENT = re.compile(rb"\\(?:x([0-9a-f]{2})|\{(\d+) ([^}]+)\}|([nrt\\]))")
SIMPLES = {b"n": b"\n", b"r": b"\r", b"t": b"\t", b"\\": b"\\"}


def developper(texte):
    def remplacer(trouve):
        octet, fois, motif, simple = trouve.groups()
        if octet:
            return bytes.fromhex(octet.decode())
        return motif * int(fois) if fois else SIMPLES[simple]

    return ECHAPPEMENT.sub(remplacer, texte)


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


def montrer(octets):
    texte = octets.decode("utf-8", "backslashreplace")
    return texte if len(texte) <= 400 else f"{texte[:300]}… ({len(octets)} octets)"


def jouer(pont, chemin):
    """What is wrong with the bridge's answers, as a list of French sentences."""
    entree, attendues = lire(chemin)
    if not entree:
        return ["session vide"]
    with tempfile.TemporaryDirectory() as maison:
        environnement = {k: v for k, v in os.environ.items() if not k.startswith("TARNAVELLE")}
        # The bridge reads no argument, be it one that other programs know.
        fait = subprocess.run([pont, "--version"], input=entree, stdout=subprocess.PIPE, timeout=60,
                              env=environnement | {"HOME": maison})
    ennuis = []
    *recues, reste = fait.stdout.split(b"\n")
    for (numero, attendue), recue in zip(attendues, recues):
        if attendue != recue:
            ennuis.append(f"ligne {numero}\n    attendu : {montrer(attendue)}\n    reçu    : {montrer(recue)}")
    if len(attendues) != len(recues):
        ennuis.append(f"{len(attendues)} réponses attendues, {len(recues)} reçues")
    if reste:
        ennuis.append(f"dernière réponse sans fin de ligne : {montrer(reste)}")
    if fait.returncode != 0:
        ennuis.append(f"statut de sortie {fait.returncode}")
    return ennuis


def main():
    pont, *choisies = sys.argv[1:]
    dossier = pathlib.Path(__file__).with_name("sessions")
    chemins = [pathlib.Path(c) for c in choisies] or sorted(dossier.glob("*.txt"))
    fautives = 0
    for chemin in chemins:
        ennuis = jouer(pont, chemin)
        fautives += bool(ennuis)
        print(f"{'ÉCHEC' if ennuis else 'ok   '} {chemin.name}", *(f"  {e}" for e in ennuis), sep="\n")
    print(f"{len(chemins)} sessions, {fautives} en échec")
    return 1 if fautives or not chemins else 0


if __name__ == "__main__":
    sys.stdout.reconfigure(encoding="utf-8", errors="backslashreplace")
    sys.exit(main())
