#!/usr/bin/env python3
"""Hermès on another machine, reached by a real ssh: loin.py BOARD

A program named hermes stands over there: "gateway" opens a gateway of ours, "chat -q" answers once. The gateway sleeps
and is woken, the link is cut, the machine refuses; the tunnel ends with the conversation, however that ends.
"""
import contextlib
import os
import pathlib
import random
import shutil
import signal
import socket
import subprocess
import sys
import threading

ICI = pathlib.Path(__file__).resolve().parent
for voisin in ("Vie", "Hotes"):
    sys.path.insert(0, str(ICI.parent / "tarnavelle-plateau" / voisin))
from conversation import attendre, ecran, etat, processus  # noqa: E402
from machine import Reseau, sshd_present  # noqa: E402
from plateau import Plateau, egal, jusqua  # noqa: E402

COUPURES = int(os.environ.get("TARNAVELLE_COUPURES", "6"))
GRAINE = int(os.environ.get("TARNAVELLE_GRAINE", random.SystemRandom().randrange(10**6)))
CLE = "clef-de-la-passerelle"


def installer(machine, port):
    """hermes, as it behaves over there; it keeps what it was given in fichier."""
    programme = machine.bin / "hermes"
    programme.write_text(f'''#!{sys.executable}
import os, sys, threading
sys.path.insert(0, {str(ICI)!r})
dossier = {str(machine.dossier)!r}
if sys.argv[1] == "chat":
    open(dossier + "/chat", "a").write(sys.argv[3] + "\\n")
    print("En ligne de commande : " + sys.argv[3])
    sys.exit(0)
open(dossier + "/pid", "w").write(str(os.getpid()))
from serveurs import Passerelle
p = Passerelle({port})
p.recus = type("Recus", (list,), {{"append": lambda soi, r: (list.append(soi, r),
    open(dossier + "/recus", "a").write(r["texte"] + "\\n"))}})()
threading.Event().wait()
''')
    # All machines are this one: over there, only what runs from there is seen.
    pgrep = machine.bin / "pgrep"
    pgrep.write_text(f'#!/bin/sh\nfor p in $({shutil.which("pgrep")} "$@"); do ps -o args= -p $p | grep -q {machine.bin} && exit 0; done\n'
                     "exit 1\n")
    for fichier in programme, pgrep:
        fichier.chmod(0o700)
    (machine.maison / ".hermes").mkdir(exist_ok=True)
    return programme


def regler(machine, port, **autres):
    lignes = {"API_SERVER_ENABLED": "true", "API_SERVER_KEY": CLE, "API_SERVER_PORT": port, **autres}
    (machine.maison / ".hermes/.env").write_text(
        "# à Hermès\n" + "".join(f'{n}="{v}"\n' for n, v in lignes.items() if v is not None))


def port_libre():
    with socket.socket() as prise:
        prise.bind(("127.0.0.1", 0))
        return prise.getsockname()[1]


def recus(machine, quoi="recus"):
    fichier = machine.dossier / quoi
    return fichier.read_text().splitlines() if fichier.exists() else []


def tunnels(machine):
    return subprocess.run(["pgrep", "-f", f"^ssh -F .*{machine.reseau.dossier}.* -N -T -L"], capture_output=True,
                          encoding="utf-8").stdout.split()


def dormir(machine):
    pid = machine.dossier / "pid"
    if pid.exists():
        try:
            os.kill(int(pid.read_text()), signal.SIGKILL)
        except ProcessLookupError:
            pass
        pid.unlink()


def dire(plateau, texte):
    plateau.reussir("message_chat", texte=texte)
    attendre(plateau)
    return ecran(plateau).replace("\n  ", " ")


def refus(plateau, machine, port):
    """What is wrong over there, and what is said of it."""
    sur = "· Sur « mini », "
    cas = [
        ({"API_SERVER_ENABLED": "false"},
         sur + "la passerelle d'Hermès est fermée : il faut API_SERVER_ENABLED=true dans ~/.hermes/.env."),
        ({"API_SERVER_KEY": None},
         sur + "la passerelle d'Hermès n'a pas de clé : il faut API_SERVER_KEY dans ~/.hermes/.env."),
    ]
    for autres, attendu in cas:
        regler(machine, port, **autres)
        vu = dire(plateau, "x")
        assert attendu in vu, vu[-700:]
    (machine.maison / ".hermes/.env").unlink()
    vu = dire(plateau, "x")
    assert "API_SERVER_ENABLED=true dans ~/.hermes/.env, et ce fichier n'y est pas." in vu, vu[-700:]
    regler(machine, port)
    programme = (machine.bin / "hermes").rename(machine.bin / "cache")
    vu = dire(plateau, "x")
    assert sur + "Hermès ne peut pas être lancé : le programme hermes est introuvable." in vu, vu[-700:]
    programme.rename(machine.bin / "hermes")
    egal(recus(machine), [])


def vie(plateau, machine, port):
    vu = dire(plateau, "bonjour à toi")
    assert "· La passerelle d'Hermès dort sur « mini » : elle est réveillée." in vu and "Bien reçu : bonjour à toi" in vu, vu
    egal((recus(machine), len(tunnels(machine))), (["bonjour à toi"], 1))
    dire(plateau, "encore")
    egal(len(tunnels(machine)), 1)
    machine.couper()  # every link at once: the next turn goes by new ones
    vu = dire(plateau, "après la coupure")
    egal(vu.count("Bien reçu : après la coupure"), 1, vu[-600:])
    egal(recus(machine), ["bonjour à toi", "encore", "après la coupure"])
    # Cut before anything was done: to its command line, once.
    vu = dire(plateau, "texte-coupe")
    assert "le message lui est redonné par sa ligne de commande." in vu and "En ligne de commande : texte-coupe" in vu, vu[-900:]
    vu = dire(plateau, "outil-coupe")
    assert "Hermès a pu agir : rien n'est redemandé." in vu
    egal(recus(machine, "chat"), ["texte-coupe"])
    regler(machine, port, API_SERVER_KEY="une autre")
    dormir(machine)
    vu = dire(plateau, "mauvaise clé")
    assert "refuse cette clé (HTTP 401)" in vu, vu[-600:]
    regler(machine, port)


def fins(plateau, machine):
    # Its program dies while the gateway is being woken: the message has not left, and does once.
    dormir(machine)
    machine.couper()
    plateau.reussir("message_chat", texte="avant la voie")
    os.kill(processus(plateau), signal.SIGKILL)
    jusqua(lambda: etat(plateau) == "sorti", "sa mort")
    assert "avant la voie" not in recus(machine)
    plateau.reussir("ouvrir_chat")
    jusqua(lambda: "avant la voie" in recus(machine), "le message qui attendait")
    attendre(plateau)
    egal((recus(machine).count("avant la voie"), ecran(plateau).count("❯ avant la voie")), (1, 1))
    dire(plateau, "ouvre")
    egal(len(tunnels(machine)), 1)
    os.kill(processus(plateau), signal.SIGKILL)
    jusqua(lambda: not tunnels(machine), "la fin du tunnel")
    dire(plateau, "rouvre")
    plateau.reussir("envoyer_touches", agent="Hermès", touches="ctrl+d")
    jusqua(lambda: not tunnels(machine) and etat(plateau) == "sorti", "la fin du tunnel")
    machine.fermer_port()
    machine.couper()
    vu = dire(plateau, "personne")
    assert "mini" in vu.split("· La conversation reprend.")[-1], vu[-600:]
    print(vu.split("❯")[-1].splitlines()[1] if "\n" in vu else vu[-200:])
    machine.ouvrir_port()


def au_hasard(plateau, machine, hasard):
    """Links cut and the gateway killed at any moment: each message is given there once at most, and none is left out
    without a word."""
    messages, total = [], 0
    for numero in range(COUPURES):
        texte = hasard.choice(["", "outil ", "silence 0.3 ", "texte-coupe "]) + f"message-{numero}"
        coupe = threading.Timer(hasard.random() * 1.5, hasard.choice([machine.couper, machine.couper, lambda: dormir(machine)]))
        coupe.start()
        vu = dire(plateau, texte)
        coupe.join()
        messages.append(texte)
        total += texte in recus(machine) + recus(machine, "chat")
        tour = vu[vu.rfind("❯ " + texte):]
        assert texte in recus(machine) + recus(machine, "chat") or "\n· " in tour, (texte, tour)
    doubles = [t for quoi in ("recus", "chat") for t in messages if recus(machine, quoi).count(t) > 1]
    print(f"{COUPURES} coupures au loin, {total} messages arrivés, {len(doubles)} deux fois")
    egal(doubles, [], GRAINE)


def main():
    if not sshd_present():
        print("sshd manque : rien n'est essayé")
        sys.exit(77)
    with Reseau() as reseau:
        machine = reseau.ajouter("mini")
        port = port_libre()
        installer(machine, port)
        with contextlib.ExitStack() as pile:
            pile.callback(dormir, machine)
            plateau = pile.enter_context(Plateau(sys.argv[1], HERMES_GATEWAY_HOTE="mini"))
            plateau.ouvrir("--config-ssh", str(reseau.configuration))
            ouverte = plateau.reussir("ouvrir_chat")
            egal((ouverte["spoken_text"], ouverte["data"]["hote"]), ("La conversation avec Hermès (mini) est ouverte.", "mini"))
            egal(plateau.reussir("ouvrir_chat", hote="mini")["data"]["neuve"], False)
            for essai in (lambda: refus(plateau, machine, port), lambda: vie(plateau, machine, port),
                          lambda: au_hasard(plateau, machine, random.Random(GRAINE)), lambda: fins(plateau, machine)):
                essai()
                print("vu", flush=True)


if __name__ == "__main__":
    main()
