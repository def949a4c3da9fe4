#!/usr/bin/env python3
"""Compares the bridge with a server of the same tools on the official TypeScript SDK.

    cmake --preset bancs && cmake --build --preset bancs --target tarnavelle-mcp porte-essai
    Bancs/comparer.py build/bancs

Everything runs on one core against the trial door; times are medians. The SDK's packages are
installed on first use. Prints a Markdown table.
"""
import argparse
import json
import os
import platform
import statistics
import subprocess
import sys
import tempfile
import time
from pathlib import Path

JETON = "jeton-du-banc-de-comparaison"


class Serveur:
    """One MCP server on pipes, spoken to one request at a time."""

    def __init__(self, commande, monde):
        self.processus = subprocess.Popen(
            commande, env=monde, stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0
        )
        self.sortie = os.fdopen(os.dup(self.processus.stdout.fileno()), "rb", buffering=1 << 16)
        self.numero = 0

    def demander(self, methode, params=None):
        self.numero += 1
        requete = {"jsonrpc": "2.0", "id": self.numero, "method": methode, "params": params or {}}
        self.processus.stdin.write(json.dumps(requete).encode() + b"\n")
        reponse = self.sortie.readline()
        if not reponse:
            sys.exit(f"{self.processus.args} s'est arrêté sur {methode}")
        return reponse

    def initialiser(self):
        client = {"name": "comparer", "version": "1"}
        self.demander(
            "initialize", {"protocolVersion": "2024-11-05", "capabilities": {}, "clientInfo": client}
        )
        self.processus.stdin.write(b'{"jsonrpc":"2.0","method":"notifications/initialized"}\n')

    def memoire(self):
        """Peak resident memory, in KiB."""
        for ligne in Path(f"/proc/{self.processus.pid}/status").read_text().splitlines():
            if ligne.startswith("VmHWM:"):
                return int(ligne.split()[1])
        return 0

    def finir(self):
        self.processus.stdin.close()
        self.processus.wait(10)
        self.sortie.close()
        self.processus.stdout.close()


def mediane_us(geste, fois):
    for _ in range(min(fois, 200)):  # warm
        geste()
    durees = []
    for _ in range(fois):
        debut = time.perf_counter_ns()
        geste()
        durees.append(time.perf_counter_ns() - debut)
    return statistics.median(durees) / 1000


def mesurer(commande, monde, options):
    demarrages = []
    for _ in range(options.demarrages):
        debut = time.perf_counter_ns()
        serveur = Serveur(commande, monde)
        serveur.initialiser()
        demarrages.append((time.perf_counter_ns() - debut) / 1e6)
        serveur.finir()
    serveur = Serveur(commande, monde)
    serveur.initialiser()
    appel = {"name": "trv_etat", "arguments": {}}
    if b'"isError":false' not in serveur.demander("tools/call", appel):
        sys.exit(f"{commande[0]} : l'appel est refusé")
    resultats = {
        "start to `initialize` (ms)": statistics.median(demarrages),
        "`ping` (µs)": mediane_us(lambda: serveur.demander("ping"), options.tours),
        "`tools/list` (µs)": mediane_us(lambda: serveur.demander("tools/list"), options.tours),
        "`tools/call`, small reply (µs)": mediane_us(
            lambda: serveur.demander("tools/call", appel), options.tours
        ),
        "peak memory (MiB)": serveur.memoire() / 1024,
    }
    serveur.finir()
    return resultats


def main():
    analyseur = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawTextHelpFormatter)
    analyseur.add_argument("construction", type=Path, help="the folder of a release build with the tests")
    analyseur.add_argument("--demarrages", type=int, default=30)
    analyseur.add_argument("--tours", type=int, default=3000)
    options = analyseur.parse_args()
    programmes = options.construction.resolve() / "bin"
    sdk = options.construction.resolve() / "Tests/sdk-mcp"
    subprocess.run(
        ["cmake", "--build", options.construction, "--target", "tarnavelle-mcp", "porte-essai", "sdk-mcp-paquets"],
        check=True,
        stdout=subprocess.DEVNULL,
    )
    if hasattr(os, "sched_setaffinity"):
        os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})

    with tempfile.TemporaryDirectory() as maison:
        neutre = {nom: valeur for nom, valeur in os.environ.items() if not nom.startswith("TARNAVELLE")}
        neutre["HOME"] = maison
        porte = subprocess.Popen(
            [programmes / "porte-essai", "--jeton", JETON], env=neutre, stdout=subprocess.PIPE, text=True
        )
        try:
            adresse = porte.stdout.readline().split(" : ")[1].split()[0]
            outils = Path(maison) / "outils.json"
            monde = neutre | {
                "TARNAVELLE_CONTROL_URL": adresse.removesuffix("/action"),
                "TARNAVELLE_CONTROL_TOKEN": JETON,
                "TARNAVELLE_OUTILS": str(outils),
            }
            pont = Serveur([programmes / "tarnavelle-mcp"], monde)
            outils.write_text(json.dumps(json.loads(pont.demander("tools/list"))["result"]))
            pont.finir()
            notre = mesurer([programmes / "tarnavelle-mcp"], monde, options)
            autre = mesurer(["node", sdk / "serveur.mjs"], monde, options)
        finally:
            porte.terminate()
            porte.wait()

    noeud = subprocess.run(["node", "--version"], capture_output=True, text=True, check=True).stdout.strip()
    print(f"{platform.system()} {platform.machine()}, one core, node {noeud}\n")
    print("| | bridge | SDK server | ratio |\n|---|---:|---:|---:|")
    for nom, valeur in notre.items():
        print(f"| {nom} | {valeur:.2f} | {autre[nom]:.2f} | {autre[nom] / valeur:.0f} |")


if __name__ == "__main__":
    main()
