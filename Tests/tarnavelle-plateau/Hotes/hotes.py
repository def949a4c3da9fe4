#!/usr/bin/env python3
"""Agents on other machines, through a real ssh: hotes.py BOARD CLIENT BRIDGE [NAME…]

Each trial has a board, and machines, of its own; with names, those trials alone.
"""
import getpass
import http.client
import json
import os
import pathlib
import signal
import stat
import subprocess
import sys
import time

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / "Vie"))
from machine import Reseau  # noqa: E402
from plateau import Plateau, egal, jusqua  # noqa: E402

PLATEAU, CLIENT, PONT = map(os.path.abspath, sys.argv[1:4])
SANS_PONT = " tarnavelle-mcp n'est pas installé sur « {} » : l'agent n'a pas les outils du plateau."


def dit(reponse):
    return reponse.get("error") or reponse.get("spoken_text")


def ouvrir(p, r, *options):
    return p.ouvrir("--config-ssh", str(r.configuration), *options)


def agent(p, hote, **choix):
    return p.reussir("ouvrir_agent", cli="claude", hote=hote, **choix)["data"]["nom"]


def etat(p, nom="Merlin"):
    return p.agents().get(nom, {}).get("etat")


def la_bas(p):
    return [(f["nom"], f["hote"], f["tmux"]) for f in p.reussir("etat")["data"].get("laBas", [])]


def dicter(p, texte, nom="Merlin"):
    egal(dit(p.appeler("dicter", agent=nom, texte=texte)), f"Envoyé à {nom}.")


def la_vie_d_un_agent(p, r):
    alpha = r.ajouter("alpha")
    (alpha.maison / ".bashrc").write_text("echo bruit; printf '\\nD0 0\\n'\n")
    (alpha.maison / "mon projet").mkdir()
    ouvrir(p, r)
    ouvert = p.reussir("ouvrir_agent", cli="claude", hote="alpha", dossier="~/mon projet")
    egal(dit(ouvert), f"Merlin est ouvert : claude dans {alpha.maison}/mon projet sur « alpha »." + SANS_PONT.format("alpha"))
    session = "tarnavelle-claude"
    egal((alpha.noms(), ouvert["data"]["pret"]), ([session], True))
    long = "une ligne\net une autre, « é » 漢字 ;\n" + "x" * 20000
    dicter(p, long)
    egal(alpha.recus(session), [long])
    egal(p.reussir("attendre", agent="Merlin")["data"]["raison"], "idle")
    egal(p.agents()["Merlin"]["source"], "crochet")
    egal(dit(p.reussir("resumer", agent="Merlin")), "fait")
    assert "(factice)" in p.reussir("lire_terminal", agent="Merlin", depuis_prompt=False)["data"]["texte"]
    dicter(p, "dialogue")
    egal(p.reussir("attendre", agent="Merlin", jusqu_a="besoin")["data"]["atteint"], True)
    assert "un dialogue attend une réponse" in dit(p.appeler("dicter", agent="Merlin", texte="jamais"))
    p.reussir("envoyer_touches", agent="Merlin", touches="1")
    jusqua(lambda: alpha.recus(session, "reponse") == ["1"], "la réponse au dialogue")
    assert "un agent distant ne peut pas être relancé d'ici." in dit(p.appeler("relancer_agent", agent="Merlin"))
    # Its window closes: it goes on, and comes back by either name.
    egal(dit(p.appeler("fermer", cible="Merlin")), f"Fermé : Merlin, dont la session {session} sur « alpha » continue.")
    egal((la_bas(p), p.agents(), p.reussir("etat")["data"].get("fermes"), alpha.noms()), ([("Merlin", "alpha", session)], {}, None, [session]))
    jusqua(lambda: not alpha.tmux("list-clients"), "plus personne ne regarde")
    for verbe, mots in (("dicter", {"texte": "x"}), ("lire_terminal", {}), ("attendre", {}), ("envoyer_touches", {"touches": "x"})):
        refus = dit(p.appeler(verbe, agent=session, **mots))
        assert refus == "Merlin vit sur « alpha » et n'est pas ouvert ici : ouvrir_agent Merlin le rejoint." or verbe == "dicter", refus
    for nom in ("Merlin", session):
        egal(dit(p.appeler("ouvrir_agent", cli=nom)), f"Merlin est rejoint : sa session {session} sur « alpha ».")
        dicter(p, "de retour")
        p.reussir("fermer", cible="Merlin")
    p.reussir("ouvrir_agent", cli="Merlin")
    # The door is killed, then tmux with it.
    p.tuer()
    ouvrir(p, r)
    jusqua(lambda: etat(p) == "au repos", "adopté")
    dicter(p, "après la porte")
    p.tmux("kill-server")
    jusqua(lambda: la_bas(p) == [("Merlin", "alpha", session)], "le tmux d'ici est mort, pas l'agent")
    p.tuer()
    ouvrir(p, r, "--reprendre")
    jusqua(lambda: etat(p) == "au repos", "rejoint au départ")
    dicter(p, "après tout")
    egal(alpha.recus(session)[2:], ["de retour", "de retour", "après la porte", "après tout"])
    egal((len(alpha.recus(session, "demarre")), len(p.terminaux())), (1, 1))
    # Its own record, over there, answers where its hooks do not; it tells the title, too.
    record = alpha.maison / "un transcript.jsonl"
    record.write_text('{"type":"assistant","message":{"content":[{"type":"text","text":"dit là-bas"}]}}\n{"aiTitle":"Refonte"}\n')
    with open(alpha.maison / ".tarnavelle/vol" / (session + ".jsonl"), "a") as carnet:
        carnet.write(('{"hook_event_name":"Inconnu","x":"' + "x" * 9000 + '"}\n') * 1000)  # as after a long cut
        carnet.write(json.dumps({"hook_event_name": "PostToolUse", "timestamp": "1999-12-31T23:59:59Z", "transcript_path": str(record)}, separators=(",", ":")) + "\n")
    egal(p.reussir("attendre", agent="Merlin")["data"]["raison"], "idle")
    assert p.agents()["Merlin"]["depuis_s"] < 60, "les horloges de là-bas ne comptent pas"
    dicter(p, "travaille 5")
    jusqua(lambda: p.reussir("resumer", agent="Merlin")["data"]["texte"] == "dit là-bas", "le transcript de là-bas")
    p.reussir("fermer", cible="Merlin")
    jusqua(lambda: [f.get("titre") for f in p.reussir("etat")["data"]["laBas"]] == ["Refonte"], "son titre")
    p.reussir("ouvrir_agent", cli="Merlin")
    # It ends over there.
    p.appeler("dicter", agent="Merlin", texte="sors 0")
    jusqua(lambda: etat(p) == "sorti", "sorti")
    assert "Claude Code a pris fin sur « alpha »" in p.reussir("lire", agent="Merlin")["data"]["texte"]
    egal(dit(p.appeler("ouvrir_agent", cli="Merlin")), f"La session {session} n'est plus sur « alpha » : Merlin y a pris fin.")
    p.reussir("fermer", cible="Merlin")
    egal((la_bas(p), p.agents()), ([], {}))


def le_lien_casse(p, r):
    alpha = r.ajouter("alpha")
    ouvrir(p, r)
    agent(p, "alpha")
    session = "tarnavelle-claude"
    for casser, reparer in ((alpha.couper, lambda: None), (alpha.fermer_port, alpha.ouvrir_port), (alpha.taire, alpha.parler)):
        dicter(p, "travaille 1")
        casser()
        if casser == alpha.fermer_port:
            alpha.couper()
        jusqua(lambda: etat(p) == "lien rompu", casser.__name__, 40)
        fiche = p.agents()["Merlin"]
        egal((fiche["source"], fiche["depuis_s"] < 15), ("lien", True))
        if casser != alpha.couper:  # it is still so
            egal(dit(p.appeler("dicter", agent="Merlin", texte="x")),
                 "Rien n'a été tapé chez Merlin : le lien avec sa machine est rompu.")
            assert "« entree »" in dit(p.appeler("envoyer_touches", agent="Merlin", touches="x"))
            attente = p.reussir("attendre", agent="Merlin", timeout_s="1")
            egal((dit(attente), attente["data"]["raison"], attente["data"]["etat"]),
                 ("Délai écoulé : le lien avec Merlin sur « alpha » est rompu, ce qu'il fait n'est pas connu.", "timeout",
                  "lien rompu"))
            ecran = p.reussir("lire", agent="Merlin")["data"]["texte"]
            assert ecran.startswith("Le lien avec « alpha » est rompu.") and "Rien n'est perdu" in ecran, ecran
            jusqua(lambda: p.agents()["Merlin"]["depuis_s"] >= 2, "depuis quand")
        reparer()

        def revenu():
            if etat(p) == "lien rompu":
                p.appeler("envoyer_touches", agent="Merlin", touches="entree")
            return etat(p) == "au repos"
        jusqua(revenu, f"{casser.__name__} : le lien est renoué", 60)
        dicter(p, f"après {casser.__name__}")
        egal(p.reussir("attendre", agent="Merlin")["data"]["raison"], "idle")
    egal(len(alpha.recus(session, "demarre")), 1)
    egal(alpha.recus(session), ["travaille 1", "après couper", "travaille 1", "après fermer_port", "travaille 1", "après taire"])
    jusqua(lambda: len(alpha.tmux("list-clients").splitlines()) == 1, "de qui regardait par un lien mort, rien ne reste")
    # A paste that the cut leaves open swallows nothing of what follows.
    alpha.tmux("set-buffer", "-b", "b", "\x1b[200~moitié")
    alpha.tmux("paste-buffer", "-r", "-d", "-b", "b", "-t", f"={session}:")
    alpha.couper()
    jusqua(lambda: etat(p) == "lien rompu" or "moitié" in dit(p.appeler("lire", agent="Merlin")), "coupé")
    jusqua(lambda: "moitié" in p.reussir("lire", agent="Merlin")["data"]["texte"], "le collage est clos")
    egal(dit(p.appeler("dicter", agent="Merlin", texte="x")),
         "Rien n'a été tapé chez Merlin : quelqu'un a un texte dans sa boîte de saisie.")
    # What shows it here is killed.
    pids = p.tmux("list-panes", "-a", "-F", "#{@tarnavelle-cle} #{pane_pid}").split()
    os.kill(int(pids[pids.index(next(iter(p.terminaux()))) + 1]), signal.SIGKILL)
    jusqua(lambda: la_bas(p) == [("Merlin", "alpha", session)], "la vue d'ici est tuée, pas l'agent")
    p.reussir("ouvrir_agent", cli="Merlin")


def ce_qui_manque_est_dit(p, r):
    alpha = r.ajouter("alpha")
    r.ajouter("nu", tmux=False)
    r.ajouter("faux", shell=("/bin/echo", "non"))
    perdu = r.ajouter("perdu")
    # The way to one of them asks a question, which nobody here is to see.
    fenetre = r.dossier / "fenetre"
    fenetre.write_text('#!/bin/sh\ntouch "$0.vue"\n')
    fenetre.chmod(0o700)
    p.monde.update(SSH_ASKPASS=str(fenetre), DISPLAY=":9")
    r.configuration.write_text(r.configuration.read_text().replace(
        "Host *", "Host derriere\n  ProxyJump moi@saut\nHost saut\n  HostKeyAlias saut\n  StrictHostKeyChecking ask\n"
        f"  Port {alpha.port}\nHost *", 1))
    ouvrir(p, r)
    menent = [(h["nom"], h["mene_a"]) for h in p.reussir("hotes")["data"]["hotes"]]
    moi = getpass.getuser() + "@127.0.0.1:"
    egal((menent[0], menent[4]), (("alpha", f"{moi}{alpha.port}"), ("derriere", f"{moi}22 par moi@saut")))
    refuse = lambda hote, **choix: dit(p.appeler("ouvrir_agent", **{"cli": "claude", "hote": hote, **choix}))  # noqa: E731
    egal(refuse("-x"), "« -x » ne peut pas être le nom d'une machine.")
    egal(refuse("x;id"), "« x;id » ne peut pas être le nom d'une machine.")
    egal(refuse("a\nb"), "« ab » ne peut pas être le nom d'une machine.")
    egal((refuse("derriere"), pathlib.Path(f"{fenetre}.vue").exists()),
         ("Ce qui mène à « derriere » (ProxyJump ou ProxyCommand) n'y est pas arrivé : essaie une fois à la main (ssh derriere).",
          False))
    egal(refuse("nu"), "tmux n'est pas installé sur « nu » : sans lui, un agent n'y survivrait pas au lien. Installe-le là-bas.")
    egal(refuse("faux"), "Rien ne s'exécute sur « faux » : le shell du compte n'y lance pas sh.")
    egal(refuse("alpha", cli="codex"), "Codex n'est pas installé sur « alpha » : « codex » n'y est pas sur le PATH.")
    egal(refuse("alpha", dossier="/nulle part"), "Ce dossier n'existe pas sur « alpha » : « /nulle part ».")
    perdu.fermer_port()
    egal(refuse("perdu"), "« perdu » ne répond pas : machine éteinte, réseau coupé, ou ssh fermé là-bas.")
    agent(p, "alpha")
    alpha.changer_de_cle()
    change = ("La clé de « alpha » n'est plus celle que ssh connaît : la machine a été réinstallée, ou quelqu'un s'est mis "
              "entre elle et toi. Vérifie-la, puis : ssh-keygen ")
    alpha.couper()
    ecran = jusqua(lambda: change[:50] in (e := " ".join(p.reussir("lire", agent="Merlin")["data"]["texte"].split())) and e, "dit")
    assert "Nouvel essai dans 300 s" in ecran, ecran  # many keys in vain, and some machines shut their door
    assert refuse("alpha").startswith(change), refuse("alpha")
    r.connus.write_text("")
    egal(refuse("alpha"), "ssh ne connaît pas encore la clé de « alpha » : connecte-toi une fois à la main (ssh alpha) pour l'accepter.")
    alpha.cle_hote = (alpha.dossier / "hote.pub").read_text()
    r.ecrire()
    (r.dossier / "cle.pub").rename(r.dossier / "gardee")
    (r.dossier / "cle.pub").write_text("")
    egal(refuse("alpha"), "« alpha » refuse la clé, et aucun mot de passe n'est demandé ici : charge-la (ssh-add), ou installe-la "
                          "là-bas (ssh-copy-id alpha).")
    egal(p.agents().keys(), {"Merlin"})
    fait = subprocess.run([CLIENT, "hotes", "--sonder", "--json"], env=p.monde, capture_output=True, encoding="utf-8", timeout=60)
    hotes = json.loads(fait.stdout)["data"]["hotes"]
    egal([(h["nom"], h["repond"]) for h in hotes], [("alpha", False), ("nu", True), ("faux", False), ("perdu", False)])
    r.configuration.write_text("Host *\n  Inconnue oui\n")
    assert refuse("alpha").startswith("ssh refuse sa configuration : « "), refuse("alpha")


def la_session_exacte(p, r):
    """Neighbours whose names begin as ours do, and a session of that name that somebody else began."""
    fish = r.ajouter("fish", shell=("fish",))
    fish.tmux("new-session", "-d", "-x", "80", "-y", "24", "-s", "tarnavelle-claude-2", str(fish.bin / "claude"))
    ouvrir(p, r)
    agent(p, "fish")
    egal((p.agents()["Merlin"]["tmux"], fish.noms()), ("tarnavelle-claude-3", ["tarnavelle-claude-2", "tarnavelle-claude-3"]))
    fish.tmux("new-session", "-d", "-s", "tarnavelle-claude-33", "sleep 600")
    fish.tmux("kill-session", "-t", "=tarnavelle-claude-3")
    jusqua(lambda: etat(p) == "sorti", "sorti, et pas le voisin")
    p.reussir("fermer", cible="Merlin")
    # What somebody else began there is found, and joined.
    egal(dit(p.appeler("ouvrir_agent", cli="tarnavelle-claude-9", hote="fish")),
         "Aucune session ne s'appelle « tarnavelle-claude-9 » sur « fish ».")
    egal(dit(p.appeler("ouvrir_agent", cli="tarnavelle-claude-2", hote="fish")),
         "Merlin est rejoint : sa session tarnavelle-claude-2 sur « fish ».")
    dicter(p, "déjà là")
    egal(fish.recus("tarnavelle-claude-2"), ["déjà là"])
    jusqua(lambda: ("tarnavelle-claude-33", "fish", "tarnavelle-claude-33") in la_bas(p), "la voisine est là-bas")
    reglages = fish.tmux("show-options", "-t", "=tarnavelle-claude-33:")
    assert "prefix" not in reglages and "status" not in reglages, reglages


def la_porte_de_la_bas(p, r):
    alpha = r.ajouter("alpha")
    (alpha.bin / "tarnavelle-mcp").symlink_to(PONT)
    ferme = r.ajouter("ferme", reglages=["AllowTcpForwarding no"])
    (ferme.bin / "tarnavelle-mcp").symlink_to(PONT)
    ouvrir(p, r)
    egal(dit(p.appeler("ouvrir_agent", cli="claude", hote="ferme")),
         f"Merlin est ouvert : claude dans {ferme.maison} sur « ferme ». « ferme » ne laisse pas passer la porte "
         "(AllowTcpForwarding) : l'agent ne peut pas joindre le plateau.")
    egal(dit(p.appeler("ouvrir_agent", cli="claude", hote="alpha")), f"Milan est ouvert : claude dans {alpha.maison} sur « alpha ».")
    session = p.agents()["Milan"]["tmux"]
    fichier = alpha.maison / ".tarnavelle/vol" / (session + ".porte.json")
    egal(stat.S_IMODE(fichier.stat().st_mode), 0o600)
    monde = json.loads(fichier.read_text())["mcpServers"]["tarnavelle"]["env"]
    mots = "".join(f.read_text(errors="replace") for f in pathlib.Path("/proc").glob("[0-9]*/cmdline") if f.exists())
    assert monde["TARNAVELLE_CONTROL_TOKEN"] not in mots, "le jeton est dans les mots d'un processus"

    def appeler(pont=PONT, monde=monde):
        """As its bridge over there does."""
        demande = {"jsonrpc": "2.0", "id": 1, "method": "tools/call", "params": {"name": "trv_bloque", "arguments": {"raison": "x"}}}
        fait = subprocess.run([pont], input=json.dumps(demande) + "\n", env={**p.monde, **monde}, capture_output=True,
                              encoding="utf-8", timeout=30)
        return '"isError":true' not in fait.stdout.replace(" ", "")
    egal(appeler(), True)
    jusqua(lambda: etat(p, "Milan") == "attend une réponse", "elle sait qui appelle")
    # One whose words would show the token is named a bridge that knows it.
    (alpha.bin / "codex").write_text(f'#!/bin/sh\necho "$@" > {r.dossier}/mots; exec sleep 600\n')
    (alpha.bin / "codex").chmod(0o700)
    pont = alpha.maison / ".tarnavelle/vol/tarnavelle-codex.pont"
    with subprocess.Popen([CLIENT, "ouvrir_agent", "codex", "--hote", "alpha"], env=p.monde, stderr=subprocess.DEVNULL) as attend:
        dits = jusqua(lambda: (r.dossier / "mots").exists() and (r.dossier / "mots").read_text(), "codex y est")
        attend.kill()  # it has no box
    egal((dits, stat.S_IMODE(pont.stat().st_mode)), (f'-c mcp_servers.tarnavelle.command="{pont}"\n', 0o700))
    egal(appeler(pont, {}), True)
    jusqua(lambda: [f["cli"] for f in p.agents().values() if f["etat"] == "attend une réponse"] == ["claude", "codex"],
           "elle sait que c'est lui")
    alpha.couper()
    jusqua(appeler, "le port est revenu, sous le même numéro", 60)
    p.tuer()
    ouvrir(p, r)
    jusqua(appeler, "une autre porte le tient", 60)
    lien = http.client.HTTPConnection("127.0.0.1", p.port)
    lien.request("POST", "/action", "{}", {"Host": "127.0.0.1:1", "Authorization": f"Bearer {p.jeton}"})
    egal(lien.getresponse().status, 421)


def main():
    essais = [la_vie_d_un_agent, le_lien_casse, ce_qui_manque_est_dit, la_session_exacte, la_porte_de_la_bas]
    for essai in essais:
        if sys.argv[4:] and essai.__name__ not in sys.argv[4:]:
            continue
        debut = time.monotonic()
        with Reseau() as r, Plateau(PLATEAU) as p:
            essai(p, r)
        print(f"{essai.__name__} ({time.monotonic() - debut:.1f} s)", flush=True)


main()
