#!/usr/bin/env python3
"""The real program, a service of another library, a real board: voix.py PROGRAM TRIAL_DOOR [TRIAL]

Sound comes from files, and from ALSA's own file device, which needs no card: what it plays goes to a process that
reads at the pace of a loudspeaker, what it records comes from a pipe.
"""
import array
import atexit
import faulthandler
import json
import os
import pathlib
import pty
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import termios
import threading
import time
import urllib.request
import wave

from service import Service, asyncio, force, pcm

VOIX, ESSAI = map(os.path.abspath, sys.argv[1:3])
MAISON = pathlib.Path(tempfile.mkdtemp(prefix="tarnavelle-")).resolve()
atexit.register(shutil.rmtree, MAISON, ignore_errors=True)
CLE = "sk-cle-tres-secrete"
HOSTILE = "Dis à Merlin \x1b]0;pris\a\x1b[2J\u202e de relire."


async def outils(s):
    await s.ouvrir()
    await s.entendre(HOSTILE)
    s.sorties = await s.appeler(("dicter", {"agent": "Merlin", "texte": "relis le patch"}), ("etat", {}))
    s.sorties += await s.appeler(("inconnu", {}), ("confirm", {"verdict": True}), ("handle_command", {"text": "note"}))
    await s.parler("Merlin relit le patch.", 0.4)


async def interruption(s):
    await s.ouvrir()
    await s.entendre("Raconte.")
    await s.parler("Une longue histoire.", 20, fini=False)
    await asyncio.sleep(1)
    await s.dire("input_audio_buffer.speech_started", audio_start_ms=0, item_id="item_o2")
    await s.finir("resp_p", "cancelled")
    s.coupe = (await s.attendre("conversation.item.truncate"))["audio_end_ms"]
    await s.dire("input_audio_buffer.speech_stopped", audio_end_ms=1, item_id="item_o2")
    await s.parler("Oui ?", 0.2)


async def pousse(s):
    await s.ouvrir()
    await s.attendre("input_audio_buffer.commit", 30)
    await s.attendre("response.create")
    await s.parler(HOSTILE, 0.3)


async def quota(s):
    await s.ouvrir()
    await s.dire("error", error={"type": "insufficient_quota", "code": "insufficient_quota", "message": "No \x1b[2J."})


async def refusee(s):
    await s.dire("error", error={"type": "invalid_request_error", "code": "invalid_api_key",
                                 "message": f"Incorrect API key provided: {CLE}."})
    await s.ws.close(3000)


async def coupure(s):
    await s.ouvrir()
    if len(SERVICE.sessions) == 1:
        return s.ws.transport.abort()
    await s.entendre("Encore là ?")
    await s.parler("Toujours.", 0.2)

ROLES = {f"{d}-{r.__name__}": r for d in ("openai", "xai") for r in (outils, interruption, pousse, quota, refusee, coupure)}
SERVICE = Service(ROLES)


def ouvrir_porte():
    fichier = MAISON / "porte.json"
    porte = subprocess.Popen([ESSAI, "--fichier", fichier], stdout=subprocess.PIPE, text=True)
    atexit.register(porte.kill)
    url = porte.stdout.readline().rsplit(" ", 1)[1].strip()
    return url, json.loads(fichier.read_text())["token"]


URL, JETON = ouvrir_porte()
MONDE = {"HOME": str(MAISON), "XDG_STATE_HOME": str(MAISON), "LC_ALL": "C.UTF-8", "PATH": os.environ["PATH"],
         "TERM": "xterm-256color", "TARNAVELLE_CONTROL_URL": URL, "TARNAVELLE_CONTROL_TOKEN": JETON,
         "TARNAVELLE_VOIX_URL": SERVICE.url, "TARNAVELLE_VOIX_CLE": CLE, "TZ": "UTC",
         "ALSA_CONFIG_PATH": str(MAISON / "asound.conf")}
MONDE |= {k: v for k, v in os.environ.items() if k.endswith("SAN_OPTIONS")}


def ecrire_wav(nom, secondes, frequence=44100, voies=2):
    with wave.open(str(MAISON / nom), "wb") as w:
        w.setparams((voies, 2, frequence, 0, "NONE", ""))
        un = array.array("h", pcm(secondes))
        w.writeframes(array.array("h", (un[int(i * 24000 / frequence)] for i in range(int(secondes * frequence))
                                        for _ in range(voies))).tobytes())
    return str(MAISON / nom)


def options(modele, *mots):
    return [VOIX, "--modele", modele, *mots], MONDE | {"TARNAVELLE_VOIX_DIALECTE": modele.split("-")[0]}


def lancer(modele, *mots, statut=0, **monde):
    SERVICE.sessions.clear()
    ligne, env = options(modele, *mots)
    fait = subprocess.run(ligne, env=env | monde, cwd=MAISON, timeout=120, capture_output=True)
    dit = fait.stdout.decode() + fait.stderr.decode()
    assert fait.returncode == statut, (modele, fait.returncode, dit)
    assert CLE not in dit and JETON not in dit and not re.search("[\x00-\x09\x0b-\x1f\u202e]", dit), dit
    return dit


def entendus(nom="r.wav"):
    with wave.open(str(MAISON / nom)) as w:
        return w.getnframes() / w.getframerate()


def une_conversation():
    for dialecte in "openai", "xai":
        evenements = [json.loads(l) for l in lancer(f"{dialecte}-outils", "--json", "--entree", QUESTION, "--sortie",
                                                    "r.wav").splitlines()]
        par = lambda genre: [e for e in evenements if e["evenement"] == genre]
        session = SERVICE.sessions[0]
        assert "Milan" in session.configuration["instructions"], "the board is told at the start"
        assert len(session.configuration["tools"]) == 10
        assert session.sorties == ["Envoyé à Merlin.", "Scène Sources. Merlin : travaille. Milan : au repos (Atelier).",
                                   "Cet outil n'existe pas.", "Rien n'attend de feu vert.",
                                   "Refusé : pas encore câblé"], session.sorties
        assert [e["nom"] for e in par("outil")] == ["dicter", "etat", "inconnu", "confirm", "handle_command"]
        assert par("operateur")[0]["texte"].endswith("de relire."), evenements
        assert par("modele")[0]["texte"] == "Merlin relit le patch."
        assert par("fin")[0]["tours"] == 3 and par("fin")[0]["jour"].startswith("Aujourd'hui : "), par("fin")
        assert entendus() == 0.4, entendus()
        assert SERVICE.cles[-1] == f"Bearer {CLE}"


def on_lui_coupe_la_parole():
    lancer("openai-interruption", "--profil", "casque", "--entree", QUESTION, "--sortie", "r.wav")
    coupe, heard = SERVICE.sessions[0].coupe / 1000, entendus() - 0.2
    assert 0.3 < coupe < 15 and abs(coupe - heard) < 0.1, ("what the service is told is what was heard", coupe, heard)


def elle_revient_apres_une_coupure():
    dit = lancer("openai-coupure", "--entree", QUESTION, "--sortie", "r.wav")
    assert "Voix : Toujours." in dit and "nouvel essai dans 1 s" in dit, dit


def les_pannes():
    fichiers = "--entree", QUESTION, "--sortie", "r.wav"
    for modele, mots, statut, attendu, monde in [
            ("openai-quota", fichiers, 1, "n'a plus de crédit. Rechargez", {}),
            ("xai-refusee", fichiers, 1, "clé du fournisseur est refusée. Vérifiez", {}),
            ("openai-outils", fichiers, 2, "clé de cet autre service manque", {"TARNAVELLE_VOIX_CLE": ""}),
            ("openai-outils", fichiers, 2, "Aucune clé de service vocal", {"TARNAVELLE_VOIX_URL": ""}),
            ("openai-outils", (), 2, "Aucun micro n'est branché.", {}),
            ("openai-outils", (), 2, "système de son", {"ALSA_CONFIG_PATH": "/dev/null"}),
            ("openai-outils", ("--entree", "perdu.wav"), 2, "« perdu.wav » n'existe pas.", {}),
            ("openai-outils", fichiers, 0, "Le modèle de texte est injoignable",
             {"TARNAVELLE_TEXTE_URL": "http://127.0.0.1:1", "TARNAVELLE_TEXTE_MODELE": "m"}),
            ("openai-pousse", ("--pousser", *fichiers), 0, "Porte introuvable",
             {"TARNAVELLE_CONTROL_URL": ""})]:
        dit = lancer(modele, *mots, statut=statut, **monde)
        assert attendu in dit and "Traceback" not in dit, (attendu, dit)
    SERVICE.statut = 401, {"error": {"code": "invalid_api_key", "message": f"bad {CLE}"}}
    jour = (MAISON / "tarnavelle/voix/cout.json").read_text()
    assert "clé du fournisseur est refusée" in lancer("openai-outils", *fichiers, statut=1)
    assert (MAISON / "tarnavelle/voix/cout.json").read_text() == jour, "nothing was held"
    SERVICE.statut = None


def par_tubes():
    ligne, env = options("openai-pousse", "--pousser", "--entree", "-", "--sortie", "-")
    fait = subprocess.run(ligne, env=env, input=pathlib.Path(QUESTION).read_bytes(), timeout=60, capture_output=True)
    assert fait.returncode == 0 and fait.stdout[:4] == b"RIFF" and len(fait.stdout) == 44 + 14400, fait
    assert "Voix : Dis à Merlin" in fait.stderr.decode()


PASSEUR = """import os, sys, time
open(sys.argv[1] + ".pid", "w").write(str(os.getpid()))
sortie, debut, lus = open(sys.argv[1], "wb", buffering=0), time.monotonic(), 0
while octets := sys.stdin.buffer.read1(1764):
    sortie.write(octets); lus += len(octets)
    time.sleep(max(0, debut + lus / 176400 - time.monotonic()))
"""


def ouvrir_carte():
    """A card of ALSA's own files: 44.1 kHz stereo, played and recorded at the pace of time."""
    (MAISON / "passeur.py").write_text(PASSEUR)
    os.mkfifo(MAISON / "micro")
    (MAISON / "asound.conf").write_text(
        "pcm.!default { type asym playback.pcm { type plug slave { pcm p rate 44100 channels 2 format S16_LE } }"
        " capture.pcm { type plug slave { pcm c rate 44100 channels 2 format S16_LE } } }\n"
        f'pcm.p {{ type file slave.pcm {{ type null }} format raw file "|exec {sys.executable} {MAISON}/passeur.py {MAISON}/joue" }}\n'
        f'pcm.c {{ type file slave.pcm {{ type null }} format raw file "/dev/null" infile "{MAISON}/micro" }}\n'
        "ctl.!default { type null }\n")

    def parler():
        # As much as ALSA asks for at a time: of less, it hands on the rest of what was there before.
        son = array.array("h", (e for v in array.array("h", pcm(0.02, 500))[:441] for e in (v, v))).tobytes()
        while True:  # each time the device is opened, to be looked at or to be heard
            try:
                with open(MAISON / "micro", "wb", buffering=0) as micro:
                    debut, ecrits = time.monotonic(), 0
                    while True:
                        micro.write(son if 2 < ecrits / 176400 % 4 < 3 else bytes(len(son)))
                        ecrits += len(son)
                        time.sleep(max(0, debut + ecrits / 176400 - time.monotonic()))
            except BrokenPipeError:
                pass
    threading.Thread(target=parler, daemon=True).start()


def forts():
    """Seconds of a tone that the loudspeaker has got."""
    octets = (MAISON / "joue").read_bytes()
    return sum(abs(s) > 1000 for s in array.array("h", octets[:len(octets) // 4 * 4])) / 2 / 44100


def une_vraie_carte():
    ouvrir_carte()
    SERVICE.sessions.clear()
    ligne, env = options("openai-outils")
    voix = subprocess.Popen(ligne, env=env, cwd=MAISON, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    try:
        lignes = []
        for l in voix.stdout:
            lignes.append(l)
            if l.startswith("Voix : "):
                break
        while forts() < 0.3:
            time.sleep(0.05)
        time.sleep(0.2)
        passeur = int((MAISON / "joue.pid").read_text())
        os.kill(passeur, signal.SIGSTOP)  # the loudspeaker stalls
        lignes.append(next(voix.stdout))
        joues = forts()
        os.kill(passeur, signal.SIGKILL)
        lignes.append(next(voix.stdout))
        voix.send_signal(signal.SIGINT)
        lignes += voix.communicate(timeout=20)[0].splitlines()
    finally:
        voix.kill()
    assert voix.returncode == 130, (voix.returncode, lignes)
    dit = "".join(lignes)
    assert "ne répond plus. Il est peut-être débranché" in dit and "Le son est revenu." in dit, dit
    assert "Expression" not in dit and "ALSA" not in dit, dit
    assert 0.3 < joues < 0.5, ("0.4 s of a tone was played", joues)


def un_terminal():
    """Space told with its release, as kitty's protocol does; and the terminal given back."""
    SERVICE.sessions.clear()
    ligne, env = options("openai-pousse", "--pousser", "--entree", ecrire_wav("long.wav", 8), "--sortie", "r.wav")
    pid, fd = pty.fork()
    if pid == 0:
        os.chdir(MAISON)
        os.execve(ligne[0], ligne, env)
    avant, vu = termios.tcgetattr(fd), ""

    def jusqu_a(texte):
        nonlocal vu
        while texte not in vu:
            vu += os.read(fd, 65536).decode(errors="replace")
    jusqu_a("\x1b[?u")
    os.write(fd, b"\x1b[?0u")
    jusqu_a("\x1b[>11u")
    jusqu_a("à l'écoute")
    os.write(fd, b"\x1b[32u")
    time.sleep(0.5)
    os.write(fd, b"\x1b[32;1:2u\x1b[32;1:3u")
    jusqu_a("Voix : Dis à Merlin")
    os.write(fd, b"\x1b[99;5u")
    jusqu_a("Aujourd'hui")
    jusqu_a("\x1b[<u")
    jusqu_a("\x1b[?2004l")
    assert os.waitpid(pid, 0)[1] == 0, vu
    assert termios.tcgetattr(fd)[:4] == avant[:4]
    assert "\x1b]0;" not in vu and "\u202e" not in vu and CLE not in vu, vu
    assert any(force(e["octets"]) > 1000 for e in SERVICE.recus("input_audio_buffer.append"))


QUESTION = ecrire_wav("question.wav", 0.8)
(MAISON / "asound.conf").write_text("pcm.!default { type hw card 31 }\nctl.!default { type hw card 31 }\n")
ESSAIS = (une_conversation, on_lui_coupe_la_parole, elle_revient_apres_une_coupure, les_pannes, par_tubes, un_terminal,
          une_vraie_carte)
if sys.argv[3:]:
    faulthandler.dump_traceback_later(150, exit=True)
    globals()[sys.argv[3]]()
else:  # each with a service, a door and a house of its own: they mostly wait, and so wait together
    menes = [(e.__name__, subprocess.Popen([sys.executable, *sys.argv, e.__name__])) for e in ESSAIS]
    assert not (rates := [nom for nom, mene in menes if mene.wait() != 0]), rates
