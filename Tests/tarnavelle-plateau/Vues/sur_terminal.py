"""tarnavelle-plateau typed at a terminal: it shows the board, goes on once it is left, and is found again."""
import contextlib
import fcntl
import os
import pty
import re
import select
import shutil
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time

PLATEAU, CTL = sys.argv[1:]
if not shutil.which("tmux"):
    sys.exit(0)
dossier = tempfile.mkdtemp(prefix="tarnavelle-")
prise = f"{dossier}/s"
NOM_SCENE = os.path.basename(os.getcwd())
os.mkdir(f"{dossier}/bin")
for outil in {*os.listdir("/usr/bin")} - {"claude", "codex", "grok", "gemini", "hermes"}:  # a machine without agents
    os.symlink(f"/usr/bin/{outil}", f"{dossier}/bin/{outil}")
milieu = {"PATH": f"{dossier}/bin", "HOME": dossier, "XDG_STATE_HOME": f"{dossier}/etats", "TERM": "xterm-256color",
          "LC_ALL": "C.UTF-8"}


class Terminal:
    """A person at a pseudo-terminal where the board was typed."""

    def __init__(self, *mots, **variables):
        self.pid, self.fd = pty.fork()
        if self.pid == 0:
            os.execve(PLATEAU, [PLATEAU, "--socket", prise, *mots], {**milieu, **variables})
        fcntl.ioctl(self.fd, termios.TIOCSWINSZ, struct.pack("HHHH", 50, 200, 0, 0))
        self.lu = ""

    def attendre(self, motif):
        fin = time.monotonic() + 30
        while not (trouve := re.search(motif, self.lu)):
            assert time.monotonic() < fin, f"{motif} n'est pas venu : {self.lu[-2000:]}"
            if select.select([self.fd], [], [], 0.1)[0]:
                with contextlib.suppress(OSError):
                    self.lu += os.read(self.fd, 65536).decode(errors="replace")
        return trouve

    def partir(self):
        os.write(self.fd, b"\x02d")

    def statut(self):
        return os.waitstatus_to_exitcode(os.waitpid(self.pid, 0)[1])


def ouverte():
    """The process of the door that is there."""
    return int(open(f"{dossier}/etats/tarnavelle/regard").read().split("\0")[0])


def scene():
    sortie = subprocess.run(["tmux", "-S", prise, "list-clients", "-t", "=tarnavelle-scene-1", "-F", "vu"],
                            capture_output=True, text=True, env=milieu).stdout
    return sortie.strip()


try:
    p = Terminal()
    p.attendre("Aucun programme d'agent n'est installé")
    p.attendre("claude +Claude Code")
    p.attendre("Aucun agent")  # drawn by the list, in tmux
    p.partir()
    porte = int(p.attendre(r"Le plateau continue .*processus (\d+)")[1])
    p.attendre("tarnavellectl eteindre")
    assert p.statut() == 0

    revenu = Terminal()
    revenu.attendre("Aucun agent")
    assert scene() == "vu"
    dedans = Terminal(TMUX="/tmp/ailleurs,1,0")
    dedans.attendre("déjà dans tmux")
    assert dedans.statut() == 0
    etat = subprocess.run([CTL, "etat"], capture_output=True, text=True, env=milieu)
    assert etat.returncode == 0, etat.stderr

    os.kill(porte, signal.SIGTERM)
    revenu.attendre("La porte est ferm")
    assert scene() == "vu"  # what runs in tmux goes on
    revenu.partir()
    revenu.attendre("La porte est fermée. Pour la rouvrir")
    assert revenu.statut() == 0

    fond = subprocess.run([PLATEAU, "--socket", prise, "--detache"], capture_output=True, text=True, env=milieu)
    assert fond.returncode == 0 and f"tmux -u -S {prise}" in fond.stdout, fond
    porte = ouverte()
    present = Terminal()
    present.attendre("Aucun agent")
    os.kill(porte, signal.SIGKILL)
    present.attendre("avant la fermeture")
    present.attendre("La porte est ferm")
    ailleurs = f"{dossier}/a/{NOM_SCENE}"  # a folder of no scene, with the name of one
    os.makedirs(ailleurs)
    fond = subprocess.run([PLATEAU, "--socket", prise, "--detache"], capture_output=True, text=True, env=milieu,
                          cwd=ailleurs)
    assert fond.returncode == 0 and f"Nouvelle scène : « {NOM_SCENE} 2 »" in fond.stderr, fond
    present.attendre(f" {NOM_SCENE} 2 ")
    present.partir()
    tuee, porte = porte, int(present.attendre(r"Le plateau continue .*processus (\d+)")[1])
    assert porte != tuee  # the door that is there, not the one that was
    os.kill(porte, signal.SIGTERM)
    limite = time.monotonic() + 20
    while os.path.exists(f"/proc/{porte}") and time.monotonic() < limite:  # it has a last word for tmux
        time.sleep(0.02)
finally:
    with contextlib.suppress(OSError):
        os.kill(ouverte(), signal.SIGKILL)  # it would open tmux again
    subprocess.run(["tmux", "-S", prise, "kill-server"], capture_output=True, env=milieu)
    shutil.rmtree(dossier, ignore_errors=True)
