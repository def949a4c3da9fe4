#!/usr/bin/env python3
"""The door killed at random moments under load, while a person looks: mort_subite.py BOARD [ROUNDS]

Agents open and close, messages are whispered, tasks laid, screens read, by callers that do not know that the door
dies under them; it opens again, and finds what was there. At the end no agent that was opened is lost, nor one that
runs without being known; no message was given twice, and each one that the door took was given or is still listed;
no task that it took is forgotten. ROUNDS, or TARNAVELLE_MORTS, is how often it is killed (8).
"""
import collections
import os
import random
import sys
import threading
import time

from plateau import Plateau, SansReponse, egal, jusqua

MORTS = int(sys.argv[2] if len(sys.argv) > 2 else os.environ.get("TARNAVELLE_MORTS", "8"))
GRAINE = int(os.environ.get("TARNAVELLE_GRAINE", random.SystemRandom().randrange(10**6)))
AGENTS = 4  # that stay
PASSAGERS = 20  # that callers forgot on the board when the door died under them, at most
SOUFFLE = 0.1  # seconds between two calls of a caller: what agents are given must keep up


class Charge:
    """What callers ask for, and what they were promised."""

    def __init__(self, plateau, hasard):
        self.plateau, self.hasard = plateau, hasard
        self.fini, self.prete = threading.Event(), threading.Event()
        self.verrou = threading.Lock()
        self.numero = 0
        self.messages = {}  # text → the agent that it was for, once the door took it
        self.taches, self.taches_closes = {}, set()  # the prompt → its number
        self.ouverts, self.fermes = set(), set()  # names
        self.dits = []  # what should never be said
        self.fils = [threading.Thread(target=self.tourner, args=(acte,), daemon=True)
                     for acte in (self.souffler, self.souffler, self.pondre, self.ouvrir_et_fermer, self.regarder)]

    def suivant(self):
        with self.verrou:
            self.numero += 1
            return self.numero

    def tourner(self, acte):
        while not self.fini.is_set():
            if not self.prete.wait(0.2):
                continue
            time.sleep(SOUFFLE)
            try:
                acte()
            except SansReponse:
                pass
            except Exception as e:  # noqa: BLE001 - a thread's failure is the test's
                self.dits.append(repr(e))

    def stable(self):
        return self.hasard.choice(self.stables)

    def souffler(self):
        agent, texte = self.stable(), f"message-{self.suivant()}"
        if self.plateau.appeler("souffler", agent=agent, texte=texte)["ok"]:
            self.messages[texte] = agent

    def pondre(self):
        prompt = f"tâche-{self.suivant()}"
        reponse = self.plateau.appeler("pondre_agent", cli="claude", prompt=prompt, verify="true")
        if not reponse["ok"]:
            return
        for fiche in reponse["data"]["agents"]:
            self.taches[prompt] = fiche["tache"]
            self.plateau.appeler("fini", agent=fiche["agent"], note=prompt)
            self.congedier(fiche["agent"])

    def ouvrir_et_fermer(self):
        reponse = self.plateau.appeler("ouvrir_agent", cli="claude")
        if reponse["ok"]:
            nom = reponse["data"]["nom"]
            self.ouverts.add(nom)
            if self.hasard.random() < 0.7:
                self.congedier(nom)

    def congedier(self, nom):
        """Ends an agent, then takes it off the board."""
        self.fermes.add(nom)
        self.plateau.appeler("dicter", agent=nom, texte="sors 0")
        self.plateau.appeler("attendre", agent=nom, jusqu_a="mort", timeout_s="5", patience=10)
        self.plateau.appeler("fermer", cible=nom)

    def balayer(self):
        passagers = set(self.plateau.agents()) - set(self.stables)
        if len(passagers) > PASSAGERS:
            for nom in passagers:
                self.plateau.appeler("envoyer_touches", agent=nom, touches="ctrl+u")
                self.congedier(nom)

    def regarder(self):
        self.plateau.appeler("etat")
        self.plateau.appeler("lire", agent=self.stable())
        self.plateau.appeler("dicter", agent=self.stable(), texte=f"consigne-{self.suivant()}")


def effacer_les_restes(plateau, charge):
    """What a caller had typed when the door died under him stays in the box: an operator takes it out."""
    for nom in charge.stables:
        lignes = plateau.reussir("lire", agent=nom)["data"]["texte"].splitlines()
        if any(ligne.startswith("❯\u00a0consigne-") for ligne in lignes):
            plateau.reussir("envoyer_touches", agent=nom, touches="ctrl+u")


def verifier(plateau, charge):
    """Once calm has come back."""
    def calme():
        donnees = plateau.reussir("etat")["data"]
        return not [m for m in donnees.get("messages", []) if m["etat"] in ("attend", "en cours")]
    jusqua(calme, "les messages en attente sont donnés", 120)
    # Also those whose window was closed while they went on.
    agents = {fiche["nom"]: fiche for fiche in plateau.reussir("pourquoi")["data"]["agents"]}
    connus = set(agents)
    perdus = (charge.ouverts - charge.fermes | set(charge.stables)) - connus
    assert not perdus, f"agents perdus : {perdus}"
    morts = {nom for nom in charge.stables if agents[nom]["etat"] == "sorti"}
    assert not morts, f"agents qui vivent et sont dits sortis : {morts}"
    vivants = sum(fiche["etat"] != "sorti" for fiche in agents.values())
    egal(len(plateau.terminaux()), vivants, "un terminal par agent", {n: f["etat"] for n, f in agents.items()})

    listes = collections.Counter(m["texte"] for m in plateau.reussir("etat")["data"].get("messages", []))
    donnes = collections.Counter()
    for nom in charge.stables:
        for texte in plateau.recus(nom):
            if texte.startswith("Message de "):
                donnes[texte.rsplit(" ", 1)[-1]] += 1
    deux_fois = [t for t, n in donnes.items() if n > 1]
    assert not deux_fois, f"messages donnés deux fois : {deux_fois}"
    oublies = [t for t in charge.messages if not donnes[t] and not listes[t]]
    assert not oublies, f"messages oubliés : {oublies}"

    taches = {t["prompt"] for t in plateau.reussir("taches")["data"]["taches"]}
    oubliees = [p for p in charge.taches if p not in taches]
    assert not oubliees, f"tâches oubliées : {oubliees}"
    assert not charge.dits, charge.dits[:5]
    return donnes, listes


def mourir(plateau, charge, hasard):
    charge.stables = [plateau.reussir("ouvrir_agent", cli="claude")["data"]["nom"] for _ in range(AGENTS)]
    for fil in charge.fils:
        fil.start()
    serveur = plateau.serveur()
    for mort in range(MORTS):
        charge.prete.set()
        time.sleep(hasard.uniform(0.02, 0.8) if hasard.random() < 0.7 else hasard.uniform(1.5, 4))  # an agent opens in one
        charge.prete.clear()
        plateau.tuer()
        plateau.ouvrir()
        effacer_les_restes(plateau, charge)
        charge.balayer()
        egal(plateau.serveur(), serveur, "tmux est tombé à la mort", mort)
        assert not [nom for nom, f in plateau.agents().items() if nom in charge.stables and f["etat"] == "sorti"], mort
    charge.fini.set()
    for fil in charge.fils:
        fil.join(60)


def main():
    hasard = random.Random(GRAINE)
    print(f"graine {GRAINE}", flush=True)
    with Plateau(sys.argv[1], FACTICE_TOUR="0.02") as plateau:
        plateau.ouvrir()
        charge = Charge(plateau, hasard)
        with plateau.regarde() as personne:
            mourir(plateau, charge, hasard)
            egal(personne.poll(), None, "la personne regarde toujours")
        donnes, listes = verifier(plateau, charge)
        print(f"{MORTS} morts subites : {AGENTS + len(charge.ouverts)} agents, {len(charge.messages)} messages promis, "
              f"{sum(donnes.values())} donnés, {len(listes)} douteux ou perdus, {len(charge.taches)} tâches")


main()
