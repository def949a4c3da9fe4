#!/usr/bin/env python3
"""Measures the board on real terminals against its goals.

    cmake --preset release && cmake --build --preset release --target tarnavelle-plateau tarnavelle-mcp tarnavellectl
    Bancs/plateau/banc.py build/release [--voisin DOSSIER]

A real board on a private socket, driven through the real bridge, with 20 agents that draw their screens again
and again (agent_factice.py); everything runs on one core. Beside it, in the same run, what a forked `tmux` takes
for the same work, and, with --voisin, the MCP server @kkweon/agent-orchestrator-mcp that was installed there by
npm. Prints a Markdown table: goal, measured, neighbours. Leaves nothing behind.
"""
import argparse
import json
import os
import shutil
import signal
import socket
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

AGENTS = 20
ICI = Path(__file__).resolve().parent


def quantiles(durees):
    """Median and p99 of seconds, in milliseconds."""
    rangees = sorted(d * 1000 for d in durees)
    return statistics.median(rangees), rangees[min(len(rangees) - 1, int(len(rangees) * 0.99))]


def ms(couple):
    return f"{couple[0]:.2f} ms, p99 {couple[1]:.2f} ms"


def cpu(pid):
    """Seconds of CPU of a process and its threads (Linux: schedstat is in nanoseconds)."""
    return sum(int(f.read_text().split()[0]) for f in Path(f"/proc/{pid}/task").glob("*/schedstat")) / 1e9


def part_de_coeur(pids, duree):
    avant, debut = [cpu(p) for p in pids], time.monotonic()
    time.sleep(duree)
    passe = time.monotonic() - debut
    return [100 * (cpu(p) - a) / passe for p, a in zip(pids, avant)]


class Serveur:
    """An MCP server on pipes, one request at a time."""

    def __init__(self, commande, monde):
        self.processus = subprocess.Popen(
            commande,
            env=monde,
            cwd=monde["HOME"],  # where it may leave files
            stdin=subprocess.PIPE,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
        )
        self.rang = 0
        self.demander(
            "initialize",
            {"protocolVersion": "2025-06-18", "capabilities": {}, "clientInfo": {"name": "banc", "version": "1"}},
        )

    def envoyer(self, methode, parametres):
        self.rang += 1
        requete = {"jsonrpc": "2.0", "id": self.rang, "method": methode, "params": parametres}
        self.processus.stdin.write(json.dumps(requete).encode() + b"\n")
        self.processus.stdin.flush()

    def recevoir(self):
        while True:
            ligne = self.processus.stdout.readline()
            if not ligne:
                raise RuntimeError("le serveur s'est tu")
            reponse = json.loads(ligne)
            if reponse.get("id") == self.rang:
                return reponse

    def demander(self, methode, parametres):
        self.envoyer(methode, parametres)
        return self.recevoir()

    def outil(self, nom, **arguments):
        resultat = self.demander("tools/call", {"name": nom, "arguments": arguments})["result"]
        if resultat.get("isError"):
            raise RuntimeError(f"{nom} : {resultat['content'][0]['text']}")
        return resultat

    def duree(self, nom, **arguments):
        debut = time.perf_counter()
        self.outil(nom, **arguments)
        return time.perf_counter() - debut

    def fermer(self):
        self.processus.stdin.close()
        self.processus.wait(10)


class Banc:
    def __init__(self, batiment, racine):
        self.bin, self.racine, self.socket = batiment / "bin", racine, str(racine / "tmux.sock")
        (racine / "bin").mkdir()
        (racine / "prises").mkdir()
        for nom in ("claude", "gemini"):
            (racine / "bin" / nom).symlink_to(ICI / "agent_factice.py")
        self.monde = {
            "HOME": str(racine),
            "PATH": f"{racine}/bin:{os.environ['PATH']}",
            "LANG": "C.UTF-8",
            "TMUX_TMPDIR": str(racine),
            "BANC_PRISES": str(racine / "prises"),
            "BANC_RYTHME": "0",
        }
        self.prise = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.prise.bind(str(racine / "banc"))
        self.prise.settimeout(20)
        self.noms = []

    # What it drives.
    def tmux(self, *mots, prise=None):
        return subprocess.run(
            ["tmux", "-S", prise or self.socket, *mots],
            env=self.monde,
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            check=False,
        ).stdout.decode()

    def ouvrir(self):
        """Starts the board; the seconds until its door was open."""
        debut = time.perf_counter()
        self.plateau = subprocess.Popen(
            [self.bin / "tarnavelle-plateau", "--socket", self.socket],
            env=self.monde,
            cwd=self.racine,
            stdout=subprocess.PIPE,
        )
        if not self.plateau.stdout.readline():
            raise RuntimeError("le plateau ne s'est pas ouvert")
        return time.perf_counter() - debut

    def fermer(self):
        self.plateau.send_signal(signal.SIGTERM)
        self.plateau.wait(10)

    def ctl(self, *mots):
        fait = subprocess.run(
            [self.bin / "tarnavellectl", "--json", *mots], env=self.monde, stdout=subprocess.PIPE, check=False
        )
        reponse = json.loads(fait.stdout)
        if not reponse["ok"]:
            raise RuntimeError(f"{mots} : {reponse}")
        return reponse["data"]

    def ordre(self, nom, texte):
        self.prise.sendto(texte.encode(), str(self.racine / "prises" / nom))
        return json.loads(self.prise.recv(1 << 16))

    def rythme(self, par_seconde):
        for nom in self.noms:
            self.ordre(nom, f"rythme {par_seconde}")
        time.sleep(1)

    def pid_tmux(self, prise=None):
        return int(self.tmux("display-message", "-p", "#{pid}", prise=prise))

    # What it measures.
    def depart(self):
        seuls = []
        for _ in range(5):  # the server of a first start; then it stands
            debut = time.perf_counter()
            self.tmux("-f", "/dev/null", "new-session", "-d")
            seuls.append(time.perf_counter() - debut)
            self.tmux("kill-server")
            time.sleep(0.2)
        froids, chauds = [], []
        for _ in range(5):
            froids.append(self.ouvrir())
            self.fermer()
            chauds.append(self.ouvrir())
            self.fermer()
            self.tmux("kill-server")
            time.sleep(0.2)
        return [statistics.median(d) * 1000 for d in (froids, chauds, seuls)]

    def dicter(self, pont, octets, fois):
        nom, jusqua_entree, jusqua_reponse = self.noms[0], [], []
        for _ in range(fois):
            texte = ("mot " * 20 + "\n") * (octets // 81) + "x" * (octets % 81)
            debut = time.monotonic_ns()
            pont.outil("trv_dicter", texte=texte, agent=nom)
            fin = time.monotonic_ns()
            quand, recus = self.ordre(nom, "recus")[-1]
            if recus != octets:
                raise RuntimeError(f"{octets} octets dictés, {recus} reçus")
            jusqua_entree.append((quand - debut) / 1e9)
            jusqua_reponse.append((fin - debut) / 1e9)
            pont.outil("trv_attendre", agent=nom)
        return quantiles(jusqua_entree), quantiles(jusqua_reponse)

    def attendre(self, pont, arguments, signe, fois, avant=None):
        """From what `signe` makes happen to the reply."""
        nom, durees = self.noms[1], []
        for i in range(fois):
            if avant:
                self.ordre(nom, avant)
            pont.envoyer(
                "tools/call",
                {"name": "trv_attendre", "arguments": {"agent": nom, **{k: v.replace("%", str(i)) for k, v in arguments.items()}}},
            )
            time.sleep(0.15)
            arrive = self.ordre(nom, signe.replace("%", str(i)))
            reponse = pont.recevoir()
            durees.append((time.monotonic_ns() - arrive) / 1e9)
            if '\\"atteint\\":true' not in json.dumps(reponse):
                raise RuntimeError(f"attendre : {reponse}")
        return quantiles(durees)

    def fourche(self, *mots, fois=300):
        durees = []
        for _ in range(fois):
            debut = time.perf_counter()
            self.tmux(*mots)
            durees.append(time.perf_counter() - debut)
        return quantiles(durees)

    def sans_nous(self, duree):
        """What the same agents cost a tmux that nobody drives."""
        prise = str(self.racine / "seul.sock")
        reglages = str(self.racine / ".local/state/tarnavelle/tmux/tmux.conf")
        for i in range(AGENTS):
            monde = [f"TARNAVELLE_NODE_ID=seul{i}", "BANC_RYTHME=10", f"BANC_PRISES={self.racine}/prises"]
            self.tmux("-f", reglages, "new-session", "-d", "-x", "200", "-y", "50", "-s", f"s{i}",
                      "env", *monde, str(ICI / "agent_factice.py"), prise=prise)  # fmt: skip
        time.sleep(3)
        part = part_de_coeur([self.pid_tmux(prise)], duree)[0]
        self.tmux("kill-server", prise=prise)
        return part

    def voisin(self, dossier):
        """etat's like of the other server: its list of as many agents. It reads no screen and waits for none."""
        index = next(Path(dossier).glob("**/agent-orchestrator-mcp/dist/index.js"), None)
        if not index:
            raise RuntimeError(f"pas de @kkweon/agent-orchestrator-mcp dans {dossier}")
        serveur = Serveur(["node", str(index)], self.monde)
        crees = [serveur.duree("agent_create", name=f"v{i}", role="banc", cwd=str(self.racine)) for i in range(5)]
        listes = [serveur.duree("agent_list") for _ in range(300)]
        serveur.fermer()
        subprocess.run(["tmux", "kill-server"], env=self.monde, stderr=subprocess.DEVNULL, check=False)
        return quantiles(listes), quantiles(crees)


def mesurer(banc, duree, voisin):
    lignes = []

    def dire(quoi, but, mesure, a_cote=""):
        lignes.append((quoi, but, mesure, a_cote))
        print(f"{quoi} : {mesure}  {a_cote}", file=sys.stderr, flush=True)

    froid, chaud, seul = banc.depart()
    dire("départ, tmux à lancer", f"≤ {seul + 30:.0f} ms", f"{froid:.0f} ms", f"tmux new-session : {seul:.0f} ms")
    dire("départ, tmux déjà là", "≤ 30 ms", f"{chaud:.0f} ms")
    banc.ouvrir()
    for _ in range(AGENTS):
        banc.noms.append(banc.ctl("ouvrir_agent", "claude", "--dossier", str(banc.racine))["nom"])
    pont = Serveur([str(banc.bin / "tarnavelle-mcp")], banc.monde)
    pids = [banc.plateau.pid, banc.pid_tmux()]
    time.sleep(12)  # what was opened settles

    plateau, _ = part_de_coeur(pids, duree)
    dire(f"{AGENTS} agents au repos, CPU de la porte", "≤ 0,1 %", f"{plateau:.3f} %")
    etat = Path(f"/proc/{banc.plateau.pid}/status").read_text()
    resident = int(etat.split("VmRSS:")[1].split()[0]) / 1024
    dire("mémoire résidente de la porte", "≤ 20 Mio", f"{resident:.1f} Mio")

    banc.rythme(10)
    plateau, tmux = part_de_coeur(pids, duree)
    banc.rythme(0)
    nu = banc.sans_nous(duree)
    dire(f"{AGENTS} agents redessinent 10 fois par seconde, CPU de la porte", "≤ 0,5 %", f"{plateau:.3f} %")
    dire("tmux lui-même", f"≤ {nu * 1.1:.2f} %", f"{tmux:.2f} %", f"sans plateau : {nu:.2f} %")

    banc.rythme(10)
    cible = banc.noms[3]
    session = next(a["tmux"] for a in banc.ctl("etat")["agents"] if a["nom"] == cible)
    fourche = banc.fourche("capture-pane", "-p", "-t", f"={session}:")
    lu = quantiles([pont.duree("trv_lire", agent=cible) for _ in range(1000)])
    dire("lire", "≤ 1 ms, p99 ≤ 10 ms", ms(lu), f"tmux capture-pane : {ms(fourche)}")
    a_cote = f"tmux list-panes -a : {ms(banc.fourche('list-panes', '-a', fois=100))}"
    vu = quantiles([pont.duree("trv_etat") for _ in range(1000)])
    dire("etat", "≤ 1 ms, p99 ≤ 10 ms", ms(vu), a_cote)
    motif = banc.attendre(pont, {"motif": "MOTIF-%-"}, "motif MOTIF-%-", 100)
    dire("attendre motif, du caractère à la réponse", "≤ 20 ms, p99 ≤ 100 ms", ms(motif))
    for quoi, signe in (("idle", "fin"), ("besoin", "besoin")):
        vu = banc.attendre(pont, {"jusqu_a": quoi}, signe, 100, avant="tour")
        dire(f"attendre {quoi}, du crochet à la réponse", "≤ 50 ms", ms(vu))
    banc.rythme(0)
    for octets, but, fois in ((80, "≤ 250 ms", 20), (2000, "≤ 250 ms", 20), (200_000, "≤ 1 s", 10)):
        entree, reponse = banc.dicter(pont, octets, fois)
        dire(f"dicter {octets} octets, jusqu'à Entrée", but, ms(entree), f"jusqu'à la réponse : {ms(reponse)}")
    if voisin:
        liste, cree = banc.voisin(voisin)
        dire("@kkweon/agent-orchestrator-mcp, agent_list de 5 agents", "", ms(liste), f"agent_create : {ms(cree)}")
    pont.fermer()
    return lignes


def principal():
    analyse = argparse.ArgumentParser(description=__doc__.split("\n")[0])
    analyse.add_argument("batiment", type=Path, help="the folder of a release build")
    analyse.add_argument("--voisin", help="where npm installed the other server")
    analyse.add_argument("--duree", type=float, default=20, help="seconds of each CPU measure")
    options = analyse.parse_args()
    os.sched_setaffinity(0, {0})
    racine = Path(tempfile.mkdtemp(prefix="banc-plateau-"))
    banc = Banc(options.batiment.resolve(), racine)
    try:
        lignes = mesurer(banc, options.duree, options.voisin)
    finally:
        if hasattr(banc, "plateau") and banc.plateau.poll() is None:
            banc.fermer()
        for prise in (None, str(racine / "seul.sock")):
            banc.tmux("kill-server", prise=prise)
        time.sleep(1)  # shells write their history as they end
        shutil.rmtree(racine, ignore_errors=True)
    print("| | but | mesuré | à côté |\n|---|---|---|---|")
    for ligne in lignes:
        print("| " + " | ".join(ligne) + " |")


if __name__ == "__main__":
    principal()
