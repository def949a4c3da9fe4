#!/usr/bin/env python3
"""The board's ear, cut and killed while notices arrive: oreille.py BOARD [ROUNDS]

Each round the door is killed, the link cut, the server gone for a while, or something sent that is no notice. At the end
every notice is in the registry, once, in its order. ROUNDS, or TARNAVELLE_COUPURES, is how many (8).
"""
import os
import pathlib
import pty
import random
import resource
import sqlite3
import subprocess
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "tarnavelle-plateau/Vie"))
from plateau import Plateau, egal, jusqua  # noqa: E402
from serveurs import TOPIC, Ntfy  # noqa: E402

COUPURES = int(sys.argv[2] if len(sys.argv) > 2 else os.environ.get("TARNAVELLE_COUPURES", "8"))
GRAINE = int(os.environ.get("TARNAVELLE_GRAINE", random.SystemRandom().randrange(10**6)))
AVIS_MAX = 950  # the registry keeps a thousand


class Facteur:
    """Publishes as long as it is asked to."""

    def __init__(self, ntfy, hasard):
        self.ntfy, self.hasard, self.fini, self.textes = ntfy, hasard, threading.Event(), []
        self.fil = threading.Thread(target=self.publier, daemon=True)
        self.fil.start()

    def publier(self):
        while not self.fini.wait(self.hasard.random() * 0.12):
            if len(self.textes) < AVIS_MAX:
                self.textes.append(f"avis {len(self.textes)}")
                self.ntfy.publier(self.textes[-1], titre="Hermès")


def notes(plateau):
    """All that the registry holds, once the door is closed."""
    lien = sqlite3.connect(plateau.etat / "plateau.db")
    try:
        return [texte for texte, in lien.execute("SELECT texte FROM avis ORDER BY numero")]
    finally:
        lien.close()


def ce_qui_se_voit(plateau, ntfy):
    """One notice, as the board shows it, until it is read."""
    plateau.ouvrir()
    jusqua(lambda: plateau.reussir("etat")["data"].get("oreille") == "écoute", "l'oreille")
    ntfy.publier("La sauvegarde est faite.\x1b[31m", "Sauvegarde #[fg=red]")
    jusqua(lambda: "avis" in plateau.reussir("etat")["data"], "l'avis")
    etat = plateau.reussir("etat")
    egal([(a["titre"], a["texte"]) for a in etat["data"]["avis"]], [("Sauvegarde #[fg=red]", "La sauvegarde est faite.\x1b[31m")])
    assert etat["spoken_text"].endswith(" Hermès a publié 1 avis, non lu."), etat
    maitre, esclave = pty.openpty()
    regarde = subprocess.Popen(["tmux", "-S", str(plateau.socket), "attach-session", "-t", "=tarnavelle-scene-1"],
                               env=plateau.monde, stdin=esclave, stdout=esclave, stderr=esclave)
    ligne = jusqua(lambda: (lambda l: "Hermès : " in l and l)(
        plateau.tmux("show-options", "-v", "-t", "=tarnavelle-scene-1:", "@tarnavelle-ligne")), "la ligne d'état")
    assert "Hermès : Sauvegarde #" in ligne and "#[fg=red]" not in ligne.replace("##", "") and "\x1b" not in ligne, ligne
    regarde.terminate()
    regarde.wait(5)
    for fd in (maitre, esclave):
        os.close(fd)
    plateau.reussir("avis", lus=True)
    assert "avis" not in plateau.reussir("etat")["data"]
    plateau.fermer()


def disque_plein(plateau, ntfy):
    """What the registry could not take is noted as soon as it can, whether others follow or not."""
    plateau.ouvrir(restore_signals=False)  # a file that may not grow is an error, not an end
    jusqua(lambda: plateau.reussir("etat")["data"].get("oreille") == "écoute", "l'oreille")
    avant = resource.prlimit(plateau.porte.pid, resource.RLIMIT_FSIZE)
    resource.prlimit(plateau.porte.pid, resource.RLIMIT_FSIZE, (2000, avant[1]))
    ntfy.publier("Le disque était plein.")
    jusqua(lambda: "Les avis d'Hermès attendent d'être notés" in plateau.erreurs.read_text(), "l'attente")
    resource.prlimit(plateau.porte.pid, resource.RLIMIT_FSIZE, avant)
    jusqua(lambda: "avis" in plateau.reussir("etat")["data"], "l'avis qui attendait", 5)
    plateau.reussir("avis", lus=True)
    plateau.fermer()


def les_siennes(plateau, ntfy):
    """On a topic that they share, the board's own alerts are no notices."""
    plateau.monde |= {"TARNAVELLE_NTFY_SERVEUR": ntfy.url + "/", "TARNAVELLE_NTFY_TOPIC": TOPIC}
    dit = plateau.ouvrir()
    assert "ont le même topic : ce qui y est titré « Tarnavelle » n'est pas relu comme un avis." in dit, dit
    jusqua(lambda: plateau.reussir("etat")["data"].get("oreille") == "écoute", "l'oreille")
    ntfy.publier("Merlin a besoin de vous.", "Tarnavelle")
    ntfy.publier("d'Hermès")
    avis = jusqua(lambda: plateau.reussir("etat")["data"].get("avis"), "l'avis")
    egal([a["texte"] for a in avis], ["d'Hermès"])
    plateau.reussir("avis", lus=True)
    debut = time.monotonic()
    plateau.fermer()
    assert time.monotonic() - debut < 2, "the ear keeps the door open"
    del plateau.monde["TARNAVELLE_NTFY_TOPIC"]


def refus(plateau, ntfy):
    ntfy.statut = 401
    plateau.ouvrir()
    attendu = "fermée : L'oreille d'Hermès se tait : le serveur refuse l'accès à ce canal."
    jusqua(lambda: plateau.reussir("etat")["data"].get("oreille") == attendu, "le refus")
    ntfy.statut = 200
    plateau.fermer()


def coupures(plateau, ntfy, hasard):
    plateau.ouvrir()
    facteur = Facteur(ntfy, hasard)
    for tour in range(COUPURES):
        time.sleep(hasard.random() * 0.3)
        quoi = hasard.choice(("mort", "mort", "mort", "lien", "serveur", "ordures", "doublons"))
        if quoi == "mort":
            plateau.tuer()
            time.sleep(hasard.choice((0, 0.5, 1.5)))
            plateau.ouvrir()
        elif quoi == "lien":
            ntfy.couper()
        elif quoi == "serveur":
            ntfy.statut = hasard.choice((500, 503))
            ntfy.couper()
            time.sleep(hasard.random())
            ntfy.statut = 200
        elif quoi == "doublons":
            for avis in ntfy.publies[-20:]:
                ntfy.dire(f"data: {__import__('json').dumps(avis)}\n\n")
        else:
            ntfy.dire(b"data: {\xff\n\n: x\nevent: message\ndata: [1]\n\ndata: " + b"y" * 100000 + b"\n\n")
    facteur.fini.set()
    facteur.fil.join()
    try:
        jusqua(lambda: plateau.reussir("etat")["data"].get("avis_nouveaux", 0) >= len(facteur.textes), "les derniers avis", 90)
    finally:
        plateau.fermer()
        recus = [t for t in notes(plateau) if t.startswith("avis ")]
        doubles = {t for t in recus if recus.count(t) > 1}
        perdus = set(facteur.textes) - set(recus)
        print(f"{COUPURES} coupures, {len(facteur.textes)} avis : {len(perdus)} perdus, {len(doubles)} doublés")
    egal(recus, facteur.textes, "in their order", GRAINE)


def main():
    print("graine", GRAINE)
    ntfy, hasard = Ntfy(), random.Random(GRAINE)
    with Plateau(sys.argv[1], HERMES_NTFY_SERVEUR=ntfy.url, HERMES_NTFY_TOPIC=TOPIC) as plateau:
        ce_qui_se_voit(plateau, ntfy)
        if hasattr(resource, "prlimit"):
            disque_plein(plateau, ntfy)
        les_siennes(plateau, ntfy)
        refus(plateau, ntfy)
        coupures(plateau, ntfy, hasard)
    ntfy.fermer()


main()
