#!/usr/bin/env python3
"""The link cut at random moments under load: coupures.py BOARD [CUTS]

Agents on two other machines are dictated to, whispered to, looked at, by callers that do not know that links die: the
processes that serve them killed, the machine silent for a while, its port closed, what shows an agent here killed, the
door killed. Each instruction is received once at most, whole, and once where the door said so; each message that the
door took is given, or listed as doubtful, and never given twice; no agent is lost or started twice. CUTS, or
TARNAVELLE_COUPURES, is how often (8).
"""
import collections
import os
import pathlib
import random
import signal
import sys
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "Vie"))
from machine import Reseau  # noqa: E402
from plateau import Plateau, SansReponse, egal, jusqua  # noqa: E402

COUPURES = int(sys.argv[2] if len(sys.argv) > 2 else os.environ.get("TARNAVELLE_COUPURES", "8"))
GRAINE = int(os.environ.get("TARNAVELLE_GRAINE", random.SystemRandom().randrange(10**6)))
SILENCES = 20  # of all cuts, one in so many is a silence: it takes 15 s to be known


class Appelant(threading.Thread):
    """Who has to do with one agent."""

    def __init__(self, plateau, nom, hasard):
        super().__init__(daemon=True)
        self.plateau, self.nom, self.hasard = plateau, nom, hasard
        self.dits, self.messages, self.erreurs = [], [], []
        self.raisons = collections.Counter()
        self.fini, self.prete = threading.Event(), threading.Event()
        self.numero, self.muet = 0, 0

    def run(self):
        while not self.fini.is_set():
            if not self.prete.wait(0.2):
                continue
            try:
                self.agir()
            except SansReponse:
                pass
            except Exception as e:  # noqa: BLE001 - a thread's failure is the test's
                self.erreurs.append(repr(e))
            time.sleep(0.02)

    def agir(self):
        self.numero += 1
        marque = f"<{self.nom}-{self.numero}>"
        taille = int(10 ** self.hasard.uniform(0, 4.5))
        texte = self.hasard.choice(["", "", "travaille 0.3 "]) + marque + "é x\n" * (taille // 5) + "."
        quoi = self.hasard.random()
        if quoi < 0.15 and time.monotonic() > self.muet:
            self.muet = time.monotonic() + 2  # as fast as they can be given
            if self.plateau.appeler("souffler", agent=self.nom, texte=marque)["ok"]:
                self.messages.append(marque)
        elif quoi < 0.3:
            self.plateau.appeler("lire", agent=self.nom)
        else:
            self.dits.append([marque, texte, "sans réponse"])
            reponse = self.plateau.appeler("dicter", agent=self.nom, texte=texte)
            livraison = reponse.get("data", {}).get("livraison", "refuse")
            self.dits[-1][2] = livraison
            self.raisons[reponse.get("data", {}).get("raison", reponse.get("error"))] += 1
            if livraison != "soumis" and "boîte" in (reponse.get("error") or ""):
                self.plateau.appeler("envoyer_touches", agent=self.nom, touches="ctrl+u")  # half of an older one


def juger(appelant, recus, listes):
    for marque, texte, livraison in appelant.dits:
        fois = [r for r in recus if marque in r]
        assert len(fois) <= 1, (marque, livraison, "reçu", len(fois), "fois")
        if livraison == "soumis":
            assert fois == [texte], (marque, livraison, [f[:80] for f in fois], len(texte), [len(f) for f in fois])
        if livraison == "refuse":
            assert not fois, (marque, livraison)
    for marque in appelant.messages:
        donne = sum(marque in r for r in recus)
        assert donne <= 1, (marque, "message donné deux fois")
        assert donne or any(marque in texte for texte in listes), (marque, "message oublié")


def main():
    hasard = random.Random(GRAINE)
    print(f"graine {GRAINE}, {COUPURES} coupures", flush=True)
    with Reseau() as r, Plateau(sys.argv[1]) as p:
        machines = [r.ajouter("alpha"), r.ajouter("beta", shell=("fish",))]
        options = ("--config-ssh", str(r.configuration))
        p.ouvrir(*options)
        appelants = []
        for n in range(4):
            nom = p.reussir("ouvrir_agent", cli="claude", hote=machines[n % 2].nom)["data"]["nom"]
            appelants.append(Appelant(p, nom, random.Random(hasard.random())))
        ou = {nom: (next(m for m in machines if m.nom == f["hote"]), f["tmux"]) for nom, f in p.agents().items()}
        for a in appelants:
            a.prete.set()
            a.start()
        comptes = dict.fromkeys(("couper", "taire", "fermer", "vue", "porte"), 0)

        def rejoindre(nom):
            """What was killed here is opened again."""
            if any(f["nom"] == nom for f in p.reussir("etat")["data"].get("laBas", [])):
                p.appeler("ouvrir_agent", cli=nom)

        for n in range(COUPURES):
            time.sleep(hasard.random() * 0.6)
            machine = hasard.choice(machines)
            quoi = hasard.choices(("couper", "fermer", "vue", "porte"), (6, 2, 1, 1))[0]
            if n % SILENCES == SILENCES // 2:
                quoi = "taire"
            comptes[quoi] += 1
            if quoi == "couper":
                machine.couper()
            elif quoi == "taire":
                machine.taire()
                time.sleep(hasard.choice([1, 17]))
                machine.parler()
            elif quoi == "fermer":
                machine.fermer_port()
                machine.couper()
                time.sleep(hasard.random())
                machine.ouvrir_port()
            elif quoi == "vue":
                pids = p.tmux("list-panes", "-a", "-F", "#{session_name} #{pane_pid}").split()
                vues = [int(b) for a, b in zip(pids[::2], pids[1::2]) if a.startswith("tarnavelle-claude")]
                if vues:
                    os.kill(hasard.choice(vues), signal.SIGKILL)
            else:
                for a in appelants:
                    a.prete.clear()
                p.tuer()
                p.ouvrir(*options)
                for a in appelants:
                    a.prete.set()
            for nom in ou:
                try:
                    rejoindre(nom)
                except SansReponse:
                    pass
        for a in appelants:
            a.fini.set()
        for a in appelants:
            a.join(120)

        def tous():
            for nom in ou:
                rejoindre(nom)
                etat = p.agents().get(nom, {}).get("etat")
                if etat != "au repos":  # what a cut left in a box is no rest, and is for a person to clear
                    p.appeler("envoyer_touches", agent=nom, touches="entree" if etat == "lien rompu" else "ctrl+u")
            return [p.agents().get(nom, {}).get("etat") for nom in ou] == ["au repos"] * len(ou)
        jusqua(tous, "tous sont revenus", 90)
        # Those that wait are given now; what a cut made doubtful is listed.
        messages = lambda: p.reussir("etat")["data"].get("messages", [])  # noqa: E731

        def donnes():
            attendent = [m for m in messages() if m["etat"] in ("attend", "en cours")]
            for nom in {m["a"] for m in attendent if "boîte" in m.get("raison", "")}:
                p.appeler("envoyer_touches", agent=nom, touches="ctrl+u")
                time.sleep(1)
            return not attendent
        jusqua(donnes, "les messages sont donnés", 90)
        time.sleep(2)  # for what a link was still carrying
        listes = [m["texte"] for m in messages()]
        sorts = {}
        for a in appelants:
            machine, session = ou[a.nom]
            assert not a.erreurs, a.erreurs
            egal(len(machine.recus(session, "demarre")), 1, a.nom, "démarré une fois")
            juger(a, machine.recus(session), listes)
            for _, _, livraison in a.dits:
                sorts[livraison] = sorts.get(livraison, 0) + 1
        print(comptes, sorts, "messages pris :", sum(len(a.messages) for a in appelants), "douteux :", len(listes), flush=True)
        print(sum((a.raisons for a in appelants), collections.Counter()).most_common(8), flush=True)
        assert sorts.get("soumis", 0) > 0


main()
