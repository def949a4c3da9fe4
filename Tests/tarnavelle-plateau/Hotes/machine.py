"""Other machines, all of them this one: a real sshd of its own port, keys and home each, real tmux behind it, and the
ssh configuration that reaches them (`Reseau.configuration`, for `ssh -F`). Nothing of the user's own ssh or tmux is
read or touched. `sshd_present()` says whether there is an sshd to run."""
import contextlib
import getpass
import os
import pathlib
import shutil
import signal
import socket
import stat
import subprocess
import sys
import tempfile
import time

VIE = pathlib.Path(__file__).resolve().parent.parent / "Vie"
PATIENCE = 30


def sshd_present():
    # Called by its absolute path: it runs itself again for each connection.
    return shutil.which("sshd", path=os.environ.get("PATH", "") + ":/usr/sbin:/usr/local/sbin:/sbin")


def _cle(fichier):
    subprocess.run(["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", str(fichier)], check=True, stdin=subprocess.DEVNULL)
    return fichier.with_suffix(".pub").read_text()


def _port_libre():
    with socket.socket() as prise:
        prise.bind(("127.0.0.1", 0))
        return prise.getsockname()[1]


def enfants(pid):
    """Its children, theirs, and so on, by what the system says now."""
    de = {}
    for entree in pathlib.Path("/proc").glob("[0-9]*/stat"):
        with contextlib.suppress(OSError):
            texte = entree.read_text()
            de.setdefault(int(texte[texte.rindex(")") + 2:].split()[1]), []).append(int(entree.parent.name))
    trouves, restent = [], [pid]
    while restent:
        siens = de.get(restent.pop(), [])
        trouves += siens
        restent += siens
    return trouves


def est_sshd(pid):
    with contextlib.suppress(OSError):
        return pathlib.Path(f"/proc/{pid}/comm").read_text().strip().startswith("sshd")
    return False


class Machine:
    """`shell`: the words of the login shell, which is given -c and the line. `tmux`: whether there is one there."""

    def __init__(self, reseau, nom, shell=("/bin/bash",), tmux=True, reglages=()):
        self.reseau, self.nom = reseau, nom
        self.dossier = reseau.dossier / nom
        self.maison = self.dossier / "chez moi"  # with a blank, as on a Mac's volume
        self.factice = self.dossier / "factice"
        self.bin = self.dossier / "bin"
        for d in (self.maison, self.factice, self.bin, self.dossier / "t"):
            d.mkdir(parents=True)
        self.port, self.ecoute, self.sessions_vues = _port_libre(), None, set()
        self.cle_hote = _cle(self.dossier / "hote")
        claude = self.bin / "claude"
        claude.write_text("#!/bin/sh\nTARNAVELLE_NODE_ID=${TARNAVELLE_NODE_ID:-$(tmux display-message -p '#S')}\n"
                          f'export TARNAVELLE_NODE_ID\nexec {sys.executable} {VIE / "agent_factice.py"} "$@"\n')
        claude.chmod(0o700)
        chemin = f"{self.bin}:{os.environ['PATH']}"
        if not tmux:
            (self.dossier / "sans").mkdir()
            for outil in ("sh", "cat", "printf", "mkdir", "rm", "ls", "head", "tail", "wc", "tput", "env", "id"):
                if ou := shutil.which(outil):
                    (self.dossier / "sans" / outil).symlink_to(ou)
            chemin = f"{self.bin}:{self.dossier / 'sans'}"
        # What sshd would do for an account of that home and shell.
        self.entree = self.dossier / "entree"
        mots = " ".join(shell)
        self.entree.write_text(
            f'#!/bin/sh\ncd "$HOME"\nPATH={chemin}\nexport PATH\n'
            f'[ -n "$SSH_ORIGINAL_COMMAND" ] && exec {mots} -c "$SSH_ORIGINAL_COMMAND"\nexec {mots}\n')
        self.entree.chmod(0o700)
        # TMUX_TMPDIR: the user's own server over there, which nobody else sees.
        self.monde = {"HOME": str(self.maison), "TMUX_TMPDIR": str(self.dossier / "t"), "FACTICE": str(self.factice)}
        lignes = [f"Port {self.port}", "ListenAddress 127.0.0.1", f"HostKey {self.dossier / 'hote'}", "PidFile none",
                  "UsePAM no", "StrictModes no", f"AuthorizedKeysFile {reseau.dossier / 'cle.pub'}",
                  "PasswordAuthentication no", "KbdInteractiveAuthentication no", "PermitRootLogin yes",
                  "PrintMotd no", "MaxStartups 100", f"ForceCommand {self.entree}",
                  "SetEnv " + " ".join(f'"{n}={v}"' for n, v in self.monde.items()), *reglages]
        self.configuration = self.dossier / "sshd_config"
        self.configuration.write_text("\n".join(lignes) + "\n")
        self.ouvrir_port()

    def ouvrir_port(self):
        if os.getuid() == 0:
            pathlib.Path("/run/sshd").mkdir(exist_ok=True)  # where it locks itself up before a login
        self.journal = open(self.dossier / "sshd.log", "ab")
        self.ecoute = subprocess.Popen([sshd_present(), "-D", "-e", "-f", str(self.configuration)],
                                       stdin=subprocess.DEVNULL, stdout=self.journal, stderr=self.journal)
        fin = time.monotonic() + PATIENCE
        while True:
            with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", self.port), 1):
                return
            assert self.ecoute.poll() is None and time.monotonic() < fin, (self.dossier / "sshd.log").read_text()
            time.sleep(0.02)

    def fermer_port(self):
        """Nobody gets in any more; those who are in stay."""
        self.sessions()
        self.ecoute.kill()
        self.ecoute.wait()
        self.journal.close()

    def sessions(self):
        """The processes of sshd that serve somebody."""
        if self.ecoute.poll() is None:
            self.sessions_vues |= set(enfants(self.ecoute.pid))
        self.sessions_vues = {p for p in self.sessions_vues if est_sshd(p)}
        return self.sessions_vues

    def signaler(self, signe):
        for pid in sorted(self.sessions()):
            with contextlib.suppress(ProcessLookupError):
                os.kill(pid, signe)

    def couper(self):
        """Every link there is, at once."""
        self.signaler(signal.SIGKILL)

    def taire(self):
        """The machine answers nothing any more, and closes nothing."""
        self.signaler(signal.SIGSTOP)
        self.ecoute.send_signal(signal.SIGSTOP)

    def parler(self):
        self.ecoute.send_signal(signal.SIGCONT)
        self.signaler(signal.SIGCONT)

    def changer_de_cle(self):
        self.fermer_port()
        for f in ("hote", "hote.pub"):
            (self.dossier / f).unlink()
        _cle(self.dossier / "hote")
        self.ouvrir_port()

    def tmux(self, *mots):
        fait = subprocess.run(["tmux", *mots], env={**os.environ, **self.monde}, capture_output=True, encoding="utf-8",
                              timeout=20)
        return fait.stdout

    def noms(self):
        """Its tmux sessions."""
        return self.tmux("list-sessions", "-F", "#{session_name}").split()

    def recus(self, session, quoi="recu"):
        """What the agent of that session kept, of one kind, in order."""
        import json
        fichier = self.factice / (session + ".jsonl")
        if not fichier.exists():
            return []
        return [l[quoi] for l in map(json.loads, fichier.read_text().splitlines()) if quoi in l]

    def finir(self):
        with contextlib.suppress(ProcessLookupError):
            self.parler()
        self.sessions()
        self.tmux("kill-server")
        if self.ecoute.poll() is None:
            self.fermer_port()
        self.couper()


class Reseau:
    """The machines, and the ssh configuration that names them."""

    def __init__(self):
        self.dossier = pathlib.Path(tempfile.mkdtemp(prefix="tvr-"))
        _cle(self.dossier / "cle")
        self.configuration = self.dossier / "config"
        self.connus = self.dossier / "known_hosts"
        self.machines = {}
        self.ecrire()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for machine in self.machines.values():
            machine.finir()
        while self.dossier.exists():  # agents that end still write there
            shutil.rmtree(self.dossier, ignore_errors=True)

    def ajouter(self, nom, **choix):
        machine = self.machines[nom] = Machine(self, nom, **choix)
        self.ecrire()
        return machine

    def ecrire(self):
        blocs, connus = [], []
        for m in self.machines.values():
            blocs.append(f"Host {m.nom}\n  Port {m.port}\n")
            connus.append(f"[127.0.0.1]:{m.port} {m.cle_hote.strip()}\n")
        commun = (f"Host *\n  HostName 127.0.0.1\n  User {getpass.getuser()}\n  IdentityFile {self.dossier / 'cle'}\n"
                  f"  IdentitiesOnly yes\n  UserKnownHostsFile {self.connus}\n  GlobalKnownHostsFile /dev/null\n"
                  "  StrictHostKeyChecking yes\n")
        (self.dossier / "machines.conf").write_text("".join(blocs))
        self.configuration.write_text(f"Include {self.dossier / 'machines.conf'}\n{commun}")
        self.connus.write_text("".join(connus))
        self.configuration.chmod(stat.S_IRUSR | stat.S_IWUSR)

    def ssh(self, nom, ligne, **options):
        return subprocess.run(["ssh", "-F", str(self.configuration), "-o", "BatchMode=yes", nom, ligne], encoding="utf-8",
                              capture_output=True, timeout=30, stdin=subprocess.DEVNULL, **options)
