#!/usr/bin/env python3
"""Plays an agent's whole session through the real bridge and client: agent.py BRIDGE CLIENT TRIAL_DOOR BOARD

Opens the trial door, starts the bridge as an agent would, shows each request and each reply, checks
them; then the board, on real terminals where there is a tmux; and ends with the configuration for real
agents. The programs get a home folder and a tmux socket of their own, so that nothing of the operator's is
read, written or shown. Exit status 1 when a reply is not the expected one.
"""
import json
import os
import pathlib
import queue
import shlex
import shutil
import subprocess
import sys
import tempfile
import textwrap
import threading
import time

DELAI = 45  # seconds; the bridge itself waits 30 for the door
LONGUEUR_MONTREE = 360
COULEURS = sys.stdout.isatty() and "NO_COLOR" not in os.environ
LARGEUR = min(shutil.get_terminal_size((100, 24)).columns, 110)


class Echec(Exception):
    """What happened is not what was expected; the message is for the operator."""


def teinte(code, texte):
    return f"\033[{code}m{texte}\033[0m" if COULEURS else texte


def dire(texte):
    print(textwrap.fill(texte, LARGEUR, initial_indent="   ", subsequent_indent="   "))


def montrer(sens, texte):
    octets = len(texte.encode())
    suite = ""
    if len(texte) > LONGUEUR_MONTREE:
        texte, suite = texte[:LONGUEUR_MONTREE], teinte("2", f"… ({octets} octets en tout)")
    fleche = teinte("36", " → ") if sens == "vers" else teinte("33", " ← ")
    print(f"{fleche}{texte}{suite}", flush=True)


class Enfant:
    """A child process read line by line, with a time limit."""

    def __init__(self, nom, commande, environnement):
        self.nom = nom
        self.processus = subprocess.Popen(
            commande, stdin=subprocess.PIPE, stdout=subprocess.PIPE, env=environnement, encoding="utf-8")
        self.lignes = queue.Queue()
        threading.Thread(target=self._lire, daemon=True).start()

    def _lire(self):
        for ligne in self.processus.stdout:
            self.lignes.put(ligne.rstrip("\n"))
        self.lignes.put(None)

    def ligne(self):
        try:
            lue = self.lignes.get(timeout=DELAI)
        except queue.Empty:
            raise Echec(f"{self.nom} n'a rien dit en {DELAI} s") from None
        if lue is None:
            raise Echec(f"{self.nom} : arrêt sans réponse")
        return lue

    def ecrire(self, ligne):
        self.processus.stdin.write(ligne + "\n")
        self.processus.stdin.flush()

    def attendre(self):
        try:
            return self.processus.wait(timeout=DELAI)
        except subprocess.TimeoutExpired:
            raise Echec(f"{self.nom} ne s'arrête pas") from None


class Agent:
    """The agent's side of the conversation: numbered requests, replies checked as they come."""

    def __init__(self, pont):
        self.pont = pont
        self.etape = 0
        self.prochain = 0

    def titre(self, texte, commentaire):
        self.etape += 1
        print("\n" + teinte("1", f"{self.etape}. {texte}"))
        dire(commentaire)

    def notifier(self, methode):
        ligne = json.dumps({"jsonrpc": "2.0", "method": methode}, ensure_ascii=False)
        montrer("vers", ligne)
        self.pont.ecrire(ligne)

    def demander(self, methode, params=None):
        requete = {"jsonrpc": "2.0", "id": self.prochain, "method": methode}
        if params is not None:
            requete["params"] = params
        self.prochain += 1
        ligne = json.dumps(requete, ensure_ascii=False)
        montrer("vers", ligne)
        depart = time.perf_counter()
        self.pont.ecrire(ligne)
        lue = self.pont.ligne()
        duree = time.perf_counter() - depart
        montrer("retour", lue)
        reponse = json.loads(lue)
        if reponse.get("id") != requete["id"]:
            raise Echec(f"la réponse porte l'id {reponse.get('id')!r}, pas {requete['id']!r}")
        return reponse, duree

    def appeler(self, outil, arguments, erreur=False):
        """The text of a tool's result; `erreur` says whether a refusal is expected."""
        reponse, duree = self.demander("tools/call", {"name": outil, "arguments": arguments})
        resultat = reponse.get("result", {})
        verifier(resultat.get("isError") is erreur, f"isError vaut {str(erreur).lower()}", duree)
        return resultat["content"][0]["text"]

    def reussir(self, outil, arguments):
        """The door's reply to a verb that it carries out."""
        dite = json.loads(self.appeler(outil, arguments))
        verifier(dite["ok"] is True, f"la porte dit : {dite['spoken_text']}")
        return dite


def verifier(vrai, constat, duree=None):
    if not vrai:
        raise Echec(f"attendu : {constat}")
    mesure = f" ({duree * 1000:.2f} ms)".replace(".", ",") if duree else ""
    print(teinte("32", f" ✓ {constat}") + teinte("2", mesure))


def dans_un_shell(client, monde):
    dossier, nom = os.path.split(client)
    monde = monde | {"PATH": dossier + os.pathsep + os.environ["PATH"], "TARNAVELLE_NODE_ID": "Merlin"}
    for mots, statut in ((["etat"], 0), (["fini", "--note", "relu"], 0), (["focus", "Merlun"], 1)):
        print(teinte("36", " $ ") + shlex.join([nom, *mots]), flush=True)
        fait = subprocess.run([nom, *mots], env=monde, capture_output=True, encoding="utf-8", timeout=DELAI)
        montrer("retour", (fait.stdout or fait.stderr).rstrip())
        verifier(fait.returncode == statut, f"statut de sortie {statut}")


def session(agent, porte, fichier, shell):
    agent.titre("Poignée de main", "L'agent se présente et demande une version récente du protocole ; "
                "le pont annonce la sienne, la seule qu'il parle. La notification ne reçoit pas de réponse.")
    reponse, duree = agent.demander("initialize", {
        "protocolVersion": "2025-11-25", "capabilities": {},
        "clientInfo": {"name": "agent-demo", "version": "1.0.0"}})
    verifier(reponse["result"]["protocolVersion"] == "2024-11-05", "protocole 2024-11-05", duree)
    agent.notifier("notifications/initialized")

    agent.titre("Les outils", "Chaque verbe de la porte devient un outil « trv_… » ; le dernier, trv_guide, "
                "est celui du pont.")
    reponse, duree = agent.demander("tools/list")
    outils = [outil["name"] for outil in reponse["result"]["tools"]]
    verifier(len(outils) == 34 and outils[-1] == "trv_guide", "33 verbes, puis le guide", duree)
    dire(", ".join(outils))

    agent.titre("L'état du plateau", "Le pont trouve la porte par son fichier (adresse et jeton), lui poste le "
                "verbe, et rend sa réponse telle quelle.")
    agent.reussir("trv_etat", {})

    agent.titre("Faire travailler un autre agent", "En ouvrir un, lui dicter une consigne, attendre qu'il ait "
                "fini, lire son écran.")
    autre = agent.reussir("trv_ouvrir_agent", {"cli": "codex", "dossier": "Sources"})["data"]["nom"]
    consigne = "Relis « porte.md » et corrige l'accès à /action"
    agent.reussir("trv_dicter", {"agent": autre, "texte": consigne})
    agent.reussir("trv_attendre", {"agent": autre, "jusqu_a": "idle", "timeout_s": "20"})
    ecran = agent.reussir("trv_lire", {"agent": autre})["data"]["texte"]
    verifier(consigne in ecran, f"la consigne est à l'écran de {autre}, accents compris")

    agent.titre("La fin du travail", "L'agent se déclare fini sans dire qui il est : le pont ajoute le nom de sa "
                "tuile (TARNAVELLE_NODE_ID).")
    fini = agent.reussir("trv_fini", {"note": "les tests passent"})
    verifier(fini["data"]["agent"] == "Merlin", "la porte a su qu'il s'agissait de Merlin")

    agent.titre("Le guide", "Le pont l'écrit lui-même, sans la porte.")
    guide = agent.appeler("trv_guide", {})
    verifier(guide.startswith("# ") and all(outil in guide for outil in outils[:-1]),
             "un document Markdown qui nomme tous les verbes")
    for paragraphe in guide.split("\n\n")[:3]:
        dire(paragraphe)

    agent.titre("Un refus", "Un verbe inconnu : la porte refuse, l'agent lit le refus comme un résultat.")
    refus = json.loads(agent.appeler("trv_decoller", {}, erreur=True))
    verifier(refus["ok"] is False and refus["error"], f"refus de la porte : {refus['error']}")

    agent.titre("Sans MCP", "Un agent dont le programme ne parle pas MCP, un script ou l'opérateur ont les mêmes "
                "verbes dans leur shell, par tarnavellectl.")
    shell()

    agent.titre("Une méthode que le pont n'a pas", "Les clients demandent aussi des « prompts » : c'est une erreur "
                "du protocole, et la session continue.")
    reponse, duree = agent.demander("prompts/list")
    verifier(reponse.get("error", {}).get("code") == -32601, "erreur -32601", duree)

    agent.titre("La porte se ferme", "Le cockpit s'en va : sa porte se ferme et retire son fichier. Le pont reste, "
                "et le dit à l'agent.")
    porte.processus.terminate()
    porte.attendre()
    verifier(not fichier.exists(), "le fichier de la porte a disparu")
    perdu = json.loads(agent.appeler("trv_etat", {}, erreur=True))
    verifier(perdu["ok"] is False and perdu["error"].startswith("Porte introuvable"), "porte introuvable")

    agent.titre("Fin de session", "L'agent ferme l'entrée du pont, qui s'arrête.")
    agent.pont.processus.stdin.close()
    verifier(agent.pont.attendre() == 0, "statut de sortie 0")


def sur_le_plateau(agent, client, monde, regarder):
    agent.titre("Un programme dans un terminal", "Le plateau ouvre un vrai terminal ; l'agent y lance Python.")
    ouvert = agent.reussir("trv_shell", {"commande": "python3 -Iq"})["data"]["nom"]
    print(teinte("36", " Pour regarder, d'un autre terminal : ") + regarder)

    agent.titre("Attendre, taper, lire", "L'agent attend l'invite, tape un calcul, attend le résultat et lit l'écran : "
                "celui qu'une personne a sous les yeux.")
    attente = {"agent": ouvert, "timeout_s": "20"}
    verifier(agent.reussir("trv_attendre", attente | {"motif": "^>>>"})["data"]["atteint"] is True, "l'invite est là")
    agent.reussir("trv_envoyer_touches", {"agent": ouvert, "touches": "6 * 7 entree"})
    verifier(agent.reussir("trv_attendre", attente | {"motif": "^42$"})["data"]["atteint"] is True, "le résultat aussi")
    ecran = agent.reussir("trv_lire", {"agent": ouvert})["data"]["texte"]
    verifier(ecran.split("\n")[:2] == [">>> 6*7", "42"], "l'écran montre le calcul et son résultat")

    agent.titre("La fin d'un programme", "ctrl+d : Python sort, son terminal reste, et son statut est connu.")
    agent.reussir("trv_envoyer_touches", {"agent": ouvert, "touches": "ctrl+d"})
    verifier(agent.reussir("trv_attendre", attente | {"jusqu_a": "mort"})["data"]["raison"] == "mort", "il est sorti")
    fenetre = agent.reussir("trv_etat", {})["data"]["fenetres"][0]
    verifier(fenetre["fini"] is True and fenetre["statut"] == 0, "statut de sortie 0")

    agent.titre("Ce qui fut fait", "Le plateau garde trace de chaque verbe, sans ce qui fut dit.")
    print(teinte("36", " $ ") + "tarnavellectl journal", flush=True)
    journal = subprocess.run([client, "journal"], env=monde, capture_output=True, encoding="utf-8", timeout=DELAI)
    montrer("retour", journal.stdout.rstrip())
    verifier(journal.returncode == 0 and "shell" in journal.stdout, "le journal nomme les verbes")


def demontrer_plateau(pont, client, plateau, monde, maison):
    print("\n" + teinte("1", "Le plateau, sur de vrais terminaux"))
    if not shutil.which("tmux"):
        dire("tmux n'est pas là : sans lui, pas de vrais terminaux. La porte d'essai, plus haut, en tient lieu.")
        return
    prise = f"{maison}/tmux"
    enfants = []
    try:
        enfants.append(Enfant("Le plateau", [plateau, "--socket", prise, "--dossier-etat", f"{maison}/etat"], monde))
        print(enfants[0].ligne())
        regarder = enfants[0].ligne().partition(" : ")[2]
        enfants.append(Enfant("Le pont", [pont], monde))
        agent = Agent(enfants[1])
        sur_le_plateau(agent, client, monde, regarder)
        if sys.stdin.isatty() and sys.stdout.isatty():
            input(teinte("1", "\nLe plateau reste ouvert pour qu'on le regarde ; Entrée le ferme. "))
        fin = subprocess.run([client, "eteindre", "--oui"], env=monde, capture_output=True, encoding="utf-8", timeout=DELAI)
        montrer("retour", (fin.stdout or fin.stderr).rstrip())
        verifier(fin.returncode == 0 and enfants[0].attendre() == 0, "le plateau s'éteint, ses terminaux avec lui")
    finally:
        for enfant in enfants:
            enfant.processus.kill()
            enfant.processus.wait()
        subprocess.run(["tmux", "-S", prise, "kill-server"], capture_output=True, check=False)


def configuration(client, monde):
    print("\n" + teinte("1", "Brancher un vrai agent"))
    dire("Ce que donne « tarnavellectl mcp-config » : le texte d'abord, puis la ligne à coller. Ni adresse ni jeton : "
         "le pont cherche la porte ouverte sur cette machine à chaque appel.")
    for forme in ("claude", "codex"):
        print("\n" + teinte("1", forme) + "\n", flush=True)
        subprocess.run([client, "mcp-config", "--" + forme], env=monde, stderr=subprocess.STDOUT, timeout=DELAI, check=True)


def main():
    pont, client, porte, plateau = (str(pathlib.Path(p).resolve()) for p in sys.argv[1:5])
    enfants = []
    with tempfile.TemporaryDirectory(prefix="tarnavelle-demo-") as maison:
        fichier = pathlib.Path(maison, "Library/Application Support/Tarnavelle/porte-commande.json")
        sans_porte = {k: v for k, v in os.environ.items() if not k.startswith(("TARNAVELLE", "TMUX", "XDG_"))}
        monde = sans_porte | {"HOME": maison}
        try:
            enfants.append(Enfant("La porte d'essai", [porte], monde))
            print(teinte("1", enfants[0].ligne()))
            verifier(fichier.exists(), "la porte a écrit son fichier")
            enfants.append(Enfant("Le pont", [pont], monde | {"TARNAVELLE_NODE_ID": "Merlin"}))
            session(Agent(enfants[1]), enfants[0], fichier, lambda: dans_un_shell(client, monde))
            demontrer_plateau(pont, client, plateau, monde, maison)
        except (Echec, OSError, KeyError, IndexError, ValueError, subprocess.TimeoutExpired) as e:
            print(teinte("31", f" ✗ {e if isinstance(e, Echec) else f'réponse inattendue ({e!r})'}"), file=sys.stderr)
            return 1
        finally:
            for enfant in enfants:
                enfant.processus.kill()
                enfant.processus.wait()
    configuration(client, sans_porte | {"TARNAVELLE_MCP_SERVER": pont})
    return 0


if __name__ == "__main__":
    for sortie in (sys.stdout, sys.stderr):
        sortie.reconfigure(encoding="utf-8")
    try:
        sys.exit(main())
    except KeyboardInterrupt:
        sys.exit(130)
