#!/usr/bin/env python3
"""What a real board goes through: vie.py BOARD CLIENT [NAME…]

Each trial has a board and a tmux of its own; with names, those trials alone.
"""
import os
import pathlib
import pty
import resource
import signal
import socket
import sqlite3
import subprocess
import sys
import time

from plateau import Plateau, egal, jusqua

PLATEAU, CLIENT = map(os.path.abspath, sys.argv[1:3])


def dit(reponse):
    return reponse.get("error") or reponse.get("spoken_text")


def ouvrir(p, nombre=2):
    return [p.reussir("ouvrir_agent", cli="claude")["data"]["nom"] for _ in range(nombre)]


def client(p, *mots, **options):
    fait = subprocess.run([CLIENT, *mots], env=p.monde, capture_output=True, encoding="utf-8", timeout=60, **options)
    return fait.returncode, fait.stdout, fait.stderr


def la_porte_part_et_revient(p):
    p.ouvrir()
    ouvrir(p, 3)
    p.reussir("dicter", agent="Merlin", texte="travaille 600")
    p.reussir("fini", agent="Milan", note="fait")
    p.reussir("bloque", agent="Harfang", raison="il manque une clé")
    p.reussir("souffler", agent="Merlin", texte="plus tard")
    p.reussir("relais", agent="Merlin", evenement="fini", destinataire="Milan", texte="Merlin a fini")
    p.reussir("shell", commande="sleep 600")
    terminaux = p.terminaux()
    for signe, statut in ((signal.SIGTERM, 0), (signal.SIGINT, 0), (signal.SIGKILL, -signal.SIGKILL)):
        egal(p.fermer(signe), statut)
        egal((p.ouvrir(), p.terminaux()), ("", terminaux), signe)
        etats = [("Merlin", "travaille", None), ("Milan", "au repos", True), ("Harfang", "attend une réponse", None)]
        jusqua(lambda: sorted((n, f["etat"], f.get("fini")) for n, f in p.agents().items()) == sorted(etats), signe)
        donnees = p.reussir("etat")["data"]
        egal([(m["a"], m["etat"], m["texte"]) for m in donnees["messages"]], [("Merlin", "attend", "plus tard")])
        egal([r["texte"] for r in donnees["relais"]], ["Merlin a fini"])
        egal([(f["nom"], f["fini"]) for f in donnees["fenetres"]], [("Shell", False)])
    raison = dit(p.reussir("pourquoi", agent="Harfang"))
    assert "d'après la porte « bloque : il manque une clé »" in raison, raison
    # What it promised before it still does.
    p.reussir("envoyer_touches", agent="Merlin", touches="esc")
    jusqua(lambda: p.recus("Merlin")[-1] == "Message de l'opérateur : plus tard", "le message")
    p.reussir("fini", agent="Merlin")
    jusqua(lambda: p.recus("Milan") == ["Message de Merlin : Merlin a fini"], "le relais")
    assert "relais" not in p.reussir("etat")["data"]


def tmux_tombe_puis_la_machine(p):
    p.ouvrir()
    ouvrir(p)
    p.reussir("shell", commande="sleep 600")
    os.kill(p.serveur(), signal.SIGKILL)
    jusqua(lambda: {f["etat"] for f in p.agents().values()} == {"sorti"}, "tous sont sortis")
    egal([f["fini"] for f in p.reussir("etat")["data"]["fenetres"]], [True])
    egal(dit(p.appeler("dicter", agent="Merlin", texte="x")), "Merlin est sorti : son processus a pris fin.")
    p.reussir("relancer_agent", agent="Merlin")
    p.reussir("dicter", agent="Merlin", texte="\x1b[31mrouge\x1b[0m")
    egal(p.recus("Merlin"), ["[31mrouge[0m"])
    p.reussir("shell", commande="exit 9")
    egal(p.reussir("attendre", agent="Shell 2")["data"]["statut"], 9)
    p.tmux("kill-server")
    p.tuer()
    p.ouvrir()
    for ligne in ("Merlin : claude dans", "Milan : claude dans", ", conversation gardée", "Shell : « sleep 600 » dans"):
        jusqua(lambda dite=ligne: dite in p.erreurs.read_text(), ligne)
    assert "exit 9" not in p.erreurs.read_text(), "it had ended before"
    p.fermer()
    p.ouvrir("--reprendre")
    jusqua(lambda: [f["etat"] for f in p.agents().values()] == ["au repos"] * 2, "ils sont revenus")
    for nom, vies in (("Merlin", 3), ("Milan", 2)):
        egal((len(p.recus(nom, "demarre")), len(set(p.recus(nom, "demarre")))), (vies, 1), "une seule conversation", nom)
    (p.dossier / "factice" / "conversations").unlink()
    relance = dit(p.reussir("relancer_agent", agent="Merlin"))
    assert relance.endswith(") : il en commence une neuve."), relance
    egal(len(set(p.recus("Merlin", "demarre"))), 2)
    p.reussir("shell", cible="Shell", commande="exit 4")
    egal(p.reussir("attendre", agent="Shell")["data"]["statut"], 4)


def un_tmux_arrete_n_a_tue_personne(p):
    p.ouvrir()
    ouvrir(p)
    serveur = p.arreter_tmux()
    muet = "les terminaux ne répondent pas."
    for verbe, refus in (("lire", "Impossible de lire l'écran de Merlin : "), ("dicter", "Rien n'a été tapé chez Merlin : "),
                         ("ouvrir_agent", "Impossible d'ouvrir Harfang : "), ("eteindre", "Rien ne s'éteint : ")):
        egal(dit(p.appeler(verbe, agent="Merlin", texte="x", cli="claude", oui=True)), refus + muet)
    p.tuer()
    egal(p.ouvrir(), "tarnavelle-plateau : Les scènes n'ont pas pu être ouvertes : " + muet + "\n")
    egal({f["etat"] for f in p.agents().values()}, {"dans un état inconnu"})
    os.kill(serveur, signal.SIGCONT)
    jusqua(lambda: {f["etat"] for f in p.agents().values()} == {"au repos"}, "ils sont adoptés")
    egal((p.serveur(), len(p.terminaux())), (serveur, 2))


def registre_mis_de_cote(p):
    p.ouvrir()
    ouvrir(p)
    p.reussir("shell", commande="sleep 600")
    p.fermer()
    base = p.etat / "plateau.db"
    with sqlite3.connect(base) as fichier:
        fichier.execute("PRAGMA user_version = 99")
    fichier.close()
    acces = p.etat / "acces.json"
    acces.write_text('{"port":')
    dit = p.ouvrir()
    assert "vient d'une version plus récente de Tarnavelle. Il est mis de côté sous" in dit, dit
    assert f"ne se lit plus : il est mis de côté sous « {acces}.endommage »." in dit, dit
    egal(pathlib.Path(f"{acces}.endommage").read_text(), '{"port":')
    egal((sorted(p.agents()), p.reussir("etat")["data"]["crew"]), (["Merlin", "Milan"], ["Shell"]))
    p.reussir("dicter", agent="Milan", texte="encore là")
    egal(sum(p.recus(nom) == ["encore là"] for nom in ("Merlin", "Milan")), 1)


def ctrl_c_au_depart(p):
    """tmux is slow to say its version: the door ends as soon as it is open, and leaves nothing that is held."""
    tmux, la, feu = p.dossier / "bin" / "tmux", p.dossier / "la", p.dossier / "feu"
    tmux.write_text(f'#!/bin/sh\n: > {la}\nuntil [ -e {feu} ]; do sleep 0.02; done\nPATH={os.environ["PATH"]} exec tmux "$@"\n')
    tmux.chmod(0o700)
    for options, statut in ((("--detache",), 130), ((), 0)):
        p.ouvrir(*options, attendre=False)
        jusqua(la.exists, "tmux est demandé")
        p.porte.send_signal(signal.SIGINT)
        feu.touch()
        egal((p.porte.wait(20), p.endpoint.exists()), (statut, False), options)
        la.unlink(), feu.unlink()
    feu.touch()
    p.ouvrir()


def deux_plateaux(p):
    p.ouvrir()
    autre, endpoint = p.dossier / "autre", p.endpoint.read_text()
    for etat, prise, dite in (
            (p.etat, p.socket, "Un autre plateau est déjà ouvert (processus {}) : deux ne peuvent pas tenir le même registre.\n"),
            (autre, p.socket, "un autre plateau tient déjà ces terminaux (processus {}).\n"),
            (autre, autre / "s", "Une autre porte est ouverte (processus {}, port " + str(p.port) + f") : « {p.endpoint} » mène à "
             "elle. À fermer d'abord.\n")):
        fait = subprocess.run([PLATEAU, "--socket", prise, "--dossier-etat", etat], env=p.monde, capture_output=True,
                              encoding="utf-8", timeout=30)
        egal((fait.returncode, fait.stderr), (1, "tarnavelle-plateau : " + dite.format(p.porte.pid)))
    egal(p.endpoint.read_text(), endpoint)


def disque_plein(p):
    """A file may grow no more, as on a disk that is full."""
    p.ouvrir()
    ouvrir(p, 1)
    tache = p.reussir("pondre_agent", cli="claude", prompt="x", verify="true")["data"]["agents"][0]
    resource.prlimit(p.porte.pid, resource.RLIMIT_FSIZE, (0, resource.RLIM_INFINITY))
    for verbe, mots in (("retiens", {"texte": "x"}), ("souffler", {"agent": "Merlin", "texte": "x"}),
                        ("ouvrir_agent", {"cli": "claude"}), ("fini", {"agent": tache["agent"]}), ("fermer", {"cible": "Merlin"}),
                        ("relais", {"agent": "Merlin", "evenement": "fini", "destinataire": "Milan", "texte": "x"})):
        reponse = p.appeler(verbe, **mots)
        assert not reponse["ok"] and reponse["error"].startswith("Le registre ne peut "), (verbe, reponse)
    egal(sorted(p.agents()), ["Merlin", "Milan"])
    resource.prlimit(p.porte.pid, resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
    p.reussir("fini", agent=tache["agent"])
    jusqua(lambda: [t["etat"] for t in p.reussir("taches")["data"]["taches"]] == ["done"], "la tâche est attestée")
    # Full while it is being attested: what came of it is written later, not found out anew.
    essais, feu = p.dossier / "essais", p.dossier / "feu"
    essais.mkdir()
    verify = f"mktemp {essais}/XXXXXX; until [ -e {feu} ]; do sleep 0.02; done"
    tache = p.reussir("pondre_agent", cli="claude", prompt="x", verify=verify)["data"]["agents"][0]
    p.reussir("fini", agent=tache["agent"])
    jusqua(lambda: list(essais.iterdir()), "verify")
    resource.prlimit(p.porte.pid, resource.RLIMIT_FSIZE, (0, resource.RLIM_INFINITY))
    feu.touch()
    fin = time.monotonic() + 1
    while time.monotonic() < fin:
        p.appeler("retiens", texte="x")  # each wakes who attests
    resource.prlimit(p.porte.pid, resource.RLIMIT_FSIZE, (resource.RLIM_INFINITY, resource.RLIM_INFINITY))
    jusqua(lambda: [t["etat"] for t in p.reussir("taches")["data"]["taches"]] == ["done"] * 2, "la seconde aussi")
    egal(len(list(essais.iterdir())), 1)


def fenetres_et_fins_brutales(p):
    p.monde["FACTICE_SORS"] = str(p.dossier / "sors")
    p.ouvrir()
    p.reussir("shell", commande="echo prêt; read x; exit 7")
    egal(p.reussir("attendre", agent="Shell", jusqu_a="motif", motif="^pr.t$")["data"]["raison"], "motif")
    egal(p.reussir("attendre", agent="shell", timeout_s="1")["data"]["raison"], "timeout")
    sessions = p.tmux("list-sessions", "-F", "#{session_name}").split()
    p.tmux("send-keys", "-t", "=" + next(s for s in sessions if s.startswith("tarnavelle-fenetre-")) + ":", "Enter")
    fin = p.reussir("attendre", agent="Shell", jusqu_a="mort")["data"]
    egal((fin["atteint"], fin["raison"], fin["statut"]), (True, "mort", 7))
    egal(p.reussir("attendre", agent="Shell", jusqu_a="besoin")["data"]["atteint"], False)
    pathlib.Path(p.monde["FACTICE_SORS"]).touch()
    parti = "Merlin s'est arrêté aussitôt ouvert : son écran montre « je ne reste pas »."
    egal(dit(p.appeler("ouvrir_agent", cli="claude")), parti)
    egal(dit(p.appeler("pondre_agent", cli="claude", prompt="x")), parti)
    egal((p.agents(), p.reussir("taches")["data"]["taches"]), ({}, []))
    pathlib.Path(p.monde["FACTICE_SORS"]).unlink()
    p.tmux("new-session", "-d", "-s", "tarnavelle-claude", "sleep 600")  # a person's own has that name
    ouvrir(p, 1)
    egal(p.agents()["Merlin"]["tmux"], "tarnavelle-claude-2")
    p.reussir("dicter", agent="Merlin", texte="laisse")
    [laisse] = jusqua(lambda: p.recus("Merlin", "laisse"), "laissé")
    p.tmux("kill-session", "-t", "=tarnavelle-claude-2:")  # by a person's hand
    jusqua(lambda: p.agents()["Merlin"]["etat"] == "sorti", "sorti")
    statut = pathlib.Path(f"/proc/{laisse}/stat")
    if statut.exists():  # Linux: it outlived him, and ends when he is started anew
        p.reussir("relancer_agent", agent="Merlin")
        jusqua(lambda: not statut.exists() or ") Z " in statut.read_text(), "ce qu'il avait laissé", 1)
    else:
        os.kill(laisse, signal.SIGKILL)


def la_porte_se_garde(p):
    """Its file comes back, and no caller's bytes end it."""
    p.ouvrir()
    p.endpoint.unlink()
    with socket.create_connection(("127.0.0.1", p.port)) as lien:
        lien.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        for octet in f"POST /action HTTP/1.1\r\nHost: 127.0.0.1:{p.port}\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n":
            lien.send(octet.encode())
            time.sleep(0.0005)
        assert lien.recv(100).startswith(b"HTTP/1.1 401"), "an empty body in pieces"
    jusqua(p.endpoint.exists, "le fichier de la porte")
    egal(p.endpoint.stat().st_mode & 0o777, 0o600)
    p.lire_endpoint()
    p.reussir("etat")


def eteindre(p):
    p.ouvrir()
    ouvrir(p, 1)
    p.reussir("dicter", agent="Merlin", texte="travaille 600")
    p.reussir("shell", commande="sleep 600")
    egal(dit(p.appeler("eteindre", jeton=p.recus("Merlin", "jeton")[0], oui=True)), "eteindre est réservé à l'opérateur.")
    fins = "Merlin (travaille), la fenêtre Shell (« sleep 600 »), tmux et la porte.\n"
    egal(client(p, "eteindre", stdin=subprocess.DEVNULL),
         (1, "Prendront fin : " + fins, "tarnavellectl : Rien n'a été fait : ajoutez --oui pour confirmer.\n"))
    for dites, attendu in ((b"n\r", 1), (b"oui\r", 0)):
        maitre, esclave = pty.openpty()
        os.write(maitre, dites)
        fait = subprocess.Popen([CLIENT, "eteindre"], env=p.monde, stdin=esclave, stdout=esclave, stderr=esclave)
        egal(fait.wait(30), attendu, os.read(maitre, 4096).decode())
    egal(p.porte.wait(10), 0)
    jusqua(lambda: not p.terminaux() and not p.tmux("list-sessions"), "tmux a pris fin")
    jusqua(lambda: p.recus("Merlin", "fin"), "l'agent a pris fin")
    assert not p.endpoint.exists()
    p.ouvrir()
    jusqua(lambda: "Merlin : claude" in p.erreurs.read_text(), "sa conversation peut être reprise")
    code, sortie, _ = client(p, "journal", "--nombre", "1", "--json")
    egal((code, "eteindre" in sortie, "fait" in sortie), (0, True, True), sortie)


def main():
    essais = [la_porte_part_et_revient, tmux_tombe_puis_la_machine, un_tmux_arrete_n_a_tue_personne, registre_mis_de_cote,
              ctrl_c_au_depart, deux_plateaux, disque_plein, fenetres_et_fins_brutales, la_porte_se_garde, eteindre]
    for essai in essais:
        if sys.argv[3:] and essai.__name__ not in sys.argv[3:]:
            continue
        debut = time.monotonic()
        with Plateau(PLATEAU) as p:
            essai(p)
        print(f"{essai.__name__} ({time.monotonic() - debut:.1f} s)", flush=True)


main()
