#!/usr/bin/env python3
"""The cockpit of a second Mac, through a real ssh and a real curl: distant.py BOARD CLIENT [NAME…]

Each trial has a board, a machine and a door over there of its own; with names, those trials alone.
"""
import json
import os
import pathlib
import subprocess
import sys
import threading
import time

ICI = pathlib.Path(__file__).resolve().parent
sys.path[:0] = [str(ICI.parent / "Vie"), str(ICI.parent.parent / "tarnavelle-hermes")]
from machine import Reseau, enfants  # noqa: E402
from plateau import Plateau, egal, jusqua  # noqa: E402
from serveurs import Poignee, Serveur  # noqa: E402

PLATEAU, CLIENT = map(os.path.abspath, sys.argv[1:3])
ENDPOINT = "Library/Application Support/Tarnavelle/porte-commande.json"
SCENE = {"scene": "Forge", "autres_scenes": ["Atelier", 3], "crew": ["Notes"], "dossier": "/Users/anne/forge",
         "agents": [{"nom": "Merlin", "etat": "actif"}], "ailleurs": [{"nom": "Milan", "scene": "Atelier"}]}
RECIT = ("SCÈNE VISIBLE sur le Mac : « Forge ». Autres scènes : « Atelier ». Agents ouverts là-bas : Merlin (actif), Milan "
         "(sur « Atelier »). Fenêtres du cockpit : Notes.")
PEUT_ETRE = " Le verbe a pu y être exécuté : il n'est pas envoyé de nouveau."


class Cockpit:
    """A door over there, which behaves as `humeur` says, and what announces it in the home of that machine."""

    def __init__(self, machine, jeton="j-premier-secret"):
        self.jeton, self.humeur, self.recus, self.data = jeton, "bien", [], SCENE
        self.fichier = machine.maison / ENDPOINT
        self.fichier.parent.mkdir(parents=True, exist_ok=True)
        self.serveur = None
        self.ouvrir()

    def ouvrir(self, port=0):
        cockpit = self

        class Porte(Poignee):
            def do_POST(self):
                corps = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
                if self.headers["Authorization"] != f"Bearer {cockpit.jeton}":
                    return self.rendre(401, {"ok": False, "error": "Jeton absent ou faux."})
                cockpit.recus.append(corps)
                if cockpit.humeur == "muette":
                    cockpit.finir.wait(20)
                    return self.connection.close()
                if cockpit.humeur == "loques":
                    return self.rendre(200, "<html>\x00")
                etat = corps["action"] == "etat"
                return self.rendre(200, {"ok": True, "data": cockpit.data} if etat else {"ok": True, "spoken_text": "C'est en grand."})

            def rendre(self, statut, quoi):
                texte = (quoi if isinstance(quoi, str) else json.dumps(quoi)).encode()
                self.send_response(statut)
                self.send_header("Content-Length", str(len(texte)))
                self.end_headers()
                self.wfile.write(texte)

        self.finir = threading.Event()
        self.serveur = Serveur(Porte, port)
        self.annoncer()

    def annoncer(self, **autre):
        self.fichier.write_text(json.dumps({"host": "127.0.0.1", "pid": 7, "port": self.serveur.server_port, "token": self.jeton, **autre}))

    def fermer(self):
        self.finir.set()
        self.serveur.fermer()

    def verbes(self):
        """What was asked of it since the last time, looks aside."""
        vus = [c for c in self.recus if c["action"] != "etat"]
        self.recus.clear()
        return vus


def dit(reponse):
    return reponse.get("error") or reponse.get("spoken_text")


def ouvrir(p, r, **monde):
    p.monde.update({"TARNAVELLE_PLATEAU_DISTANT": "studio", **monde})
    p.ouvrir("--config-ssh", str(r.configuration))


def chrono(faire):
    debut = time.monotonic()
    rendu = faire()
    return rendu, time.monotonic() - debut


def distant(p):
    reponse, duree = chrono(lambda: p.reussir("etat"))
    assert duree < 1.5, f"etat a attendu {duree:.1f} s"
    return reponse["data"]["distant"]


def client(p, *mots):
    fait = subprocess.run([CLIENT, *mots], env=p.monde, capture_output=True, encoding="utf-8", timeout=60)
    return (fait.stdout + fait.stderr).strip()


def ce_qui_se_relaie(p, r):
    studio = r.ajouter("studio")
    (studio.maison / ".bashrc").write_text("echo bruit\n")
    cockpit = Cockpit(studio)
    reglages = p.dossier / "maison/.config/tarnavelle/reglages"
    reglages.parent.mkdir(parents=True)
    reglages.write_text("TARNAVELLE_PLATEAU_DISTANT=studio\n")
    reglages.chmod(0o600)
    p.ouvrir("--config-ssh", str(r.configuration))
    etat = jusqua(lambda: "scene" in (e := p.reussir("etat"))["data"]["distant"] and e, "le plateau de là-bas")
    assert etat["spoken_text"].endswith(" " + RECIT), etat["spoken_text"]
    vu = etat["data"]["distant"]
    egal((vu["hote"], vu["scene"], vu["autres_scenes"], vu["fenetres"], vu["dossier"], vu.get("panne")),
         ("studio", "Forge", ["Atelier"], ["Notes"], "/Users/anne/forge", None))
    egal(vu["agents"], [{"nom": "Merlin", "etat": "actif", "scene": "Forge"},
                        {"nom": "Milan", "etat": "sur « Atelier »", "scene": "Atelier"}])
    p.reussir("ouvrir_agent", cli="claude")  # a Merlin of this board's own
    cockpit.verbes()
    fait = "Sur « studio » : C'est en grand."
    for mots, relaye in ((("focus", "Merlin@studio"), {"action": "focus", "cible": "Merlin"}),
                         (("focus", "l'atelier $HOME`id`@studio"), {"action": "focus", "cible": "l'atelier $HOME`id`"}),
                         (("focus", "milan"), {"action": "focus", "cible": "Milan"}),
                         (("aller_scene", "Forge@studio"), {"action": "aller_scene", "nom": "Forge"}),
                         (("aller_scene", "atelier"), {"action": "aller_scene", "nom": "Atelier"}),
                         (("ouvrir_agent", "codex", "--dossier", "~/forge", "--hote", "@studio"),
                          {"action": "ouvrir_agent", "cli": "codex", "dossier": "~/forge", "hote": ""}),
                         (("ouvrir_web", "https://exemple.fr/@moi @studio"),
                          {"action": "ouvrir_web", "cible": "https://exemple.fr/@moi", "externe": False})):
        egal((client(p, *mots), cockpit.verbes()), (fait, [relaye]), mots)
    assert dit(p.reussir("focus", cible="Merlin")).startswith("Merlin est ")
    seuls = " est du plateau de « studio », pas de celui-ci. Seuls focus, aller_scene, ouvrir_agent et ouvrir_web se relaient sur un autre Mac."
    for verbe, mots in (("dicter", {"agent": "Merlin@studio", "texte": "x"}), ("fermer", {"cible": "Merlin@studio"}),
                        ("lire_terminal", {"agent": "Merlin@studio"})):
        egal(dit(p.appeler(verbe, **mots)), "« Merlin »" + seuls)
    egal((dit(p.appeler("dicter", agent="Milan", texte="x")), cockpit.verbes()), ("« Milan »" + seuls, []))
    ici = p.reussir("ouvrir_agent", cli="claude", hote="studio")["data"]["nom"]  # without "@": one of this board's own
    egal((p.agents()[ici]["hote"], cockpit.verbes()), ("studio", []))
    cockpit.fermer()


def la_porte_de_la_bas_change(p, r):
    studio = r.ajouter("studio")
    cockpit = Cockpit(studio)
    ouvrir(p, r)
    focus = lambda: (dit(p.appeler("focus", cible="Merlin@studio")), len(cockpit.verbes()))  # noqa: E731
    fait = "Sur « studio » : C'est en grand."
    egal(focus(), (fait, 1))
    cockpit.fermer()  # another port, another token
    cockpit.jeton = "j-second-secret"
    cockpit.ouvrir()
    egal(focus(), (fait, 1))
    cockpit.jeton = "j-troisieme-secret"  # the same port
    cockpit.annoncer()
    egal(focus(), (fait, 1))
    cockpit.annoncer(token="j-faux")
    cockpit.jeton = "j-quatrieme-secret"
    egal(focus(), ("Sur « studio » : Jeton absent ou faux.", 0))
    cockpit.annoncer()
    egal(focus(), (fait, 1))
    cockpit.humeur = "loques"
    egal(focus(), ("Ce que la porte de « studio » a répondu n'est pas lisible." + PEUT_ETRE, 1))
    # It says nothing: nobody waits long for it, and no word of ours shows the token meanwhile.
    cockpit.humeur = "muette"
    mots = []
    guet = threading.Thread(target=lambda: [mots.extend(
        (pathlib.Path(f"/proc/{pid}/cmdline").read_bytes() for pid in enfants(p.porte.pid) if pathlib.Path(f"/proc/{pid}").exists())
        ) or time.sleep(0.1) for _ in range(30)])
    guet.start()
    rendu, duree = chrono(focus)
    egal(rendu, ("La porte de « studio » n'a pas répondu à temps." + PEUT_ETRE, 1))
    assert 4 < duree < 8, duree
    guet.join()
    assert mots and cockpit.jeton.encode() not in b"".join(mots), "le jeton est dans les mots d'un processus d'ici"
    egal(distant(p)["panne"], "Le plateau de « studio » est en cours de lecture.")
    jusqua(lambda: distant(p)["panne"] == "La porte de « studio » n'a pas répondu à temps.", "la panne est dite")
    cockpit.humeur = "bien"
    jusqua(lambda: distant(p).get("scene") == "Forge" and "panne" not in distant(p), "elle répond de nouveau")
    cockpit.fermer()
    egal(focus(), ("La porte annoncée sur « studio » ne répond pas : le cockpit a pu s'y fermer.", 0))
    cockpit.fichier.unlink()
    egal(focus(), ("Le cockpit de « studio » n'annonce aucune porte : il n'y est pas ouvert.", 0))
    vu = jusqua(lambda: (d := distant(p)).get("panne", "").startswith("Le cockpit de « studio » n'annonce") and d, "fermé")
    egal((vu["scene"], vu["age_s"] >= 0), ("Forge", True))
    # The machine itself says nothing, then is gone.
    studio.taire()
    egal(distant(p)["scene"], "Forge")
    studio.parler()
    studio.fermer_port()
    studio.couper()
    egal(focus()[0], "« studio » ne répond pas : machine éteinte, réseau coupé, ou ssh fermé là-bas.")


def un_vrai_plateau_la_bas(p, r):
    studio = r.ajouter("studio")
    with Plateau(PLATEAU, HOME=str(studio.maison)) as autre:
        autre.endpoint = studio.maison / ENDPOINT
        autre.ouvrir()
        ouvrir(p, r)
        egal((dit(p.appeler("focus", cible="Harfang@studio")), distant(p)["agents"]),
             ("Sur « studio » : Aucune fenêtre ne s'appelle « Harfang ». Ouvertes : aucun.", []))
        ouvert = p.reussir("ouvrir_agent", cli="claude", hote="@studio")
        assert dit(ouvert).startswith("Sur « studio » : Merlin est ouvert : claude"), ouvert
        egal((list(autre.agents()), list(p.agents())), (["Merlin"], []))
        egal([a["nom"] for a in jusqua(lambda: distant(p)["agents"], "il s'y voit")], ["Merlin"])
        assert dit(p.reussir("focus", cible="merlin")).startswith("Sur « studio » : Merlin est ")
        autre.fermer()
        autre.ouvrir()  # another door
        assert dit(p.reussir("focus", cible="Merlin@studio")).startswith("Sur « studio » : Merlin est ")
        p.fermer()


def main():
    for essai in (ce_qui_se_relaie, la_porte_de_la_bas_change, un_vrai_plateau_la_bas):
        if sys.argv[3:] and essai.__name__ not in sys.argv[3:]:
            continue
        debut = time.monotonic()
        with Reseau() as r, Plateau(PLATEAU) as p:
            essai(p, r)
        print(f"{essai.__name__} ({time.monotonic() - debut:.1f} s)", flush=True)


main()
