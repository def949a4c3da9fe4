"""A real board in a world of its own: home, tmux socket, agent programs. What drives it is a caller of its door."""
import contextlib
import fcntl
import http.client
import json
import os
import pathlib
import pty
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import threading
import time

ICI = pathlib.Path(__file__).resolve().parent
PATIENCE = 30


def egal(obtenu, attendu, *contexte):
    assert obtenu == attendu, f"{contexte}\n    obtenu  : {obtenu!r}\n    attendu : {attendu!r}"


def jusqua(vrai, quoi="", patience=PATIENCE):
    """Asks again until it is so; what it gave."""
    fin = time.monotonic() + patience
    while not (vu := vrai()):
        assert time.monotonic() < fin, f"attendu en vain : {quoi}"
        time.sleep(0.02)
    return vu


class SansReponse(Exception):
    """The door is gone, or did not answer: the call may have been carried out."""


class Plateau:
    def __init__(self, programme, **environnement):
        self.programme = os.path.abspath(programme)
        self.dossier = pathlib.Path(tempfile.mkdtemp(prefix="tv-"))
        for nom in ("bin", "projet", "factice", "maison"):
            (self.dossier / nom).mkdir()
        claude = self.dossier / "bin" / "claude"
        claude.write_text(f'#!/bin/sh\nexec {sys.executable} {ICI / "agent_factice.py"} "$@"\n')
        claude.chmod(0o700)
        self.socket = self.dossier / "s"
        self.etat = self.dossier / "etat"
        self.endpoint = self.dossier / "maison/Library/Application Support/Tarnavelle/porte-commande.json"
        self.monde = {"HOME": str(self.dossier / "maison"), "PATH": f"{self.dossier / 'bin'}:{os.environ['PATH']}",
                      "FACTICE": str(self.dossier / "factice"), "SHELL": "/bin/sh", "TERM": "screen-256color",
                      "LC_ALL": "C.UTF-8", **environnement}
        self.porte, self.dit, self.arrete = None, "", 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.finir()

    def ouvrir(self, *options, attendre=True, **choix):
        """Opens the door; `dit` is what it says on its error stream."""
        self.erreurs = self.dossier / "erreurs"
        with open(self.erreurs, "wb") as erreurs:
            self.porte = subprocess.Popen(
                [self.programme, "--socket", str(self.socket), "--dossier-etat", str(self.etat), *options],
                env=self.monde, cwd=self.dossier / "projet", stdout=subprocess.PIPE, stderr=erreurs, **choix)
        if not attendre:
            return None
        ligne = self.porte.stdout.readline().decode()
        self.dit = self.erreurs.read_text()
        assert ligne.startswith("Plateau ouvert"), (ligne, self.dit)
        self.lire_endpoint()
        return self.dit

    def lire_endpoint(self):
        lu = json.loads(self.endpoint.read_text())
        self.port, self.jeton = lu["port"], lu["token"]

    def appeler(self, action, jeton=None, patience=90, **arguments):
        """The door's reply. `patience`: seconds, told to the door by `attendre`."""
        lien = http.client.HTTPConnection("127.0.0.1", self.port, timeout=patience)
        try:
            entetes = {"Authorization": f"Bearer {jeton or self.jeton}"}
            if action == "attendre":
                entetes["X-Tarnavelle-Patience"] = str(patience)
            lien.request("POST", "/action", json.dumps({"action": action, **arguments}), entetes)
            return json.loads(lien.getresponse().read())
        except (OSError, http.client.HTTPException, ValueError) as e:
            raise SansReponse(f"{action} : {e!r}") from None
        finally:
            lien.close()

    def reussir(self, action, **arguments):
        reponse = self.appeler(action, **arguments)
        assert reponse["ok"], (action, arguments, reponse)
        return reponse

    def agents(self):
        """Every agent by its name, as `etat` tells it."""
        donnees = self.reussir("etat")["data"]
        return {fiche["nom"]: fiche for fiche in donnees["agents"] + donnees["ailleurs"]}

    def tuer(self):
        self.porte.send_signal(signal.SIGKILL)
        self.porte.wait(10)

    def fermer(self, signe=signal.SIGTERM):
        self.porte.send_signal(signe)
        statut = self.porte.wait(15)
        self.porte = None
        return statut

    def tmux(self, *mots, entree=None):
        fait = subprocess.run(["tmux", "-S", str(self.socket), *mots], capture_output=True, encoding="utf-8", timeout=20,
                              input=entree)
        return fait.stdout

    def serveur(self):
        return int(self.tmux("display-message", "-p", "#{pid}") or 0)

    def arreter_tmux(self):
        """Until `finir` at the latest."""
        self.arrete = self.serveur()
        os.kill(self.arrete, signal.SIGSTOP)
        return self.arrete

    def terminaux(self):
        """The keys of the terminals whose programs run, by tmux itself."""
        lignes = self.tmux("list-panes", "-a", "-F", "#{@tarnavelle-cle} #{pane_dead} #{session_name}").splitlines()
        return {l.split()[0] for l in lignes if len(l.split()) == 3 and l.split()[1] == "0" and l.split()[2] != "plateau"}

    def recus(self, nom, quoi="recu"):
        """What an agent kept, of one kind, in order."""
        fichier = self.dossier / "factice" / (nom + ".jsonl")
        if not fichier.exists():
            return []
        lignes = [json.loads(l) for l in fichier.read_text().splitlines()]
        return [l[quoi] for l in lignes if quoi in l]

    @contextlib.contextmanager
    def regarde(self):
        """A person's terminal at the scene in view, whatever becomes of the door."""
        maitre, esclave = pty.openpty()
        fcntl.ioctl(esclave, termios.TIOCSWINSZ, struct.pack("HHHH", 50, 200, 0, 0))
        mots = (self.etat / "regard").read_text().split("\0")[1:]
        personne = subprocess.Popen(mots, env=self.monde, stdin=esclave, stdout=esclave, stderr=esclave, start_new_session=True)
        os.close(esclave)

        def lire():
            with contextlib.suppress(OSError):  # how a pseudo-terminal ends
                while os.read(maitre, 65536):
                    pass
        fil = threading.Thread(target=lire)
        fil.start()
        try:
            yield personne
        finally:
            personne.terminate()
            personne.wait(10)
            fil.join()
            os.close(maitre)

    def finir(self):
        if self.arrete > 1:
            with contextlib.suppress(ProcessLookupError):
                os.kill(self.arrete, signal.SIGCONT)
        if self.porte and self.porte.poll() is None:
            with contextlib.suppress(subprocess.TimeoutExpired):
                self.fermer()
        if self.porte and self.porte.poll() is None:
            self.tuer()
        self.tmux("kill-server")
        while self.dossier.exists():  # agents that end still write there
            shutil.rmtree(self.dossier, ignore_errors=True)
