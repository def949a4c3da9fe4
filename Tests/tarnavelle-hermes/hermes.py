#!/usr/bin/env python3
"""Hermès in a shell: hermes.py CLIENT. Settings, notices and messages, by the real client against foreign servers."""
import json
import os
import pathlib
import pty
import select
import signal
import subprocess
import sys
import tempfile
import time

from serveurs import TOPIC, Ntfy, Passerelle

CLIENT = os.path.abspath(sys.argv[1])
SECRET = "clef-de-la-passerelle"


def egal(obtenu, attendu, *contexte):
    assert obtenu == attendu, f"{contexte}\n    obtenu  : {obtenu!r}\n    attendu : {attendu!r}"


class Monde:
    def __init__(self):
        self.dossier = tempfile.TemporaryDirectory(prefix="th-")
        racine = pathlib.Path(self.dossier.name)
        self.variables = {"HOME": str(racine), "PATH": os.environ["PATH"], "LC_ALL": "C.UTF-8", "TZ": "UTC",
                          "XDG_CONFIG_HOME": str(racine / "conf"), "XDG_STATE_HOME": str(racine / "etat")}
        self.mac = sys.platform == "darwin"
        support = racine / "Library/Application Support"
        self.reglages = (support if self.mac else racine / "conf") / "tarnavelle/reglages"
        self.conversations = (support if self.mac else racine / "etat") / "tarnavelle/conversations-shell"

    def lancer(self, *mots, entree="", **variables):
        return subprocess.run([CLIENT, "hermes", *mots], env=self.variables | variables, input=entree, capture_output=True,
                              encoding="utf-8", timeout=30)

    def partir(self, *mots, **variables):
        return subprocess.Popen([CLIENT, "hermes", *mots], env=self.variables | variables, stdin=subprocess.DEVNULL,
                                stdout=subprocess.PIPE, stderr=subprocess.PIPE, encoding="utf-8")

    def regler(self, cle, valeur):
        fait = self.lancer("regler", cle, entree=valeur + "\n")
        assert fait.returncode == 0, fait
        return fait.stdout


def reglages():
    monde = Monde()
    assert SECRET not in monde.regler("HERMES_GATEWAY_CLE", SECRET)
    monde.regler("HERMES_NTFY_TOPIC", TOPIC)
    monde.regler("HERMES_GATEWAY_URL", "http://127.0.0.1:1/v1")
    egal(monde.reglages.stat().st_mode & 0o777, 0o600)
    with open(monde.reglages, "a") as f:
        f.write("# à moi\nINCONNUE=1\nHERMES_NTFY_JETON = \"un jeton\"\r\n")
    vu = monde.lancer("--json", HERMES_GATEWAY_HOTE="mini")
    faits = json.loads(vu.stdout)
    egal({nom: (r["valeur"], r["source"]) for nom, r in faits["reglages"].items()},
         {"HERMES_NTFY_TOPIC": ("cana…(26)", "fichier"), "HERMES_NTFY_JETON": ("…(8)", "fichier"),
          "HERMES_GATEWAY_URL": ("http://127.0.0.1:1/v1", "fichier"), "HERMES_GATEWAY_CLE": ("…(21)", "fichier"),
          "HERMES_GATEWAY_HOTE": ("mini", "environnement")})
    egal(faits["plaintes"], [f"« {monde.reglages} », ligne 5 : « INCONNUE » n'est pas un réglage connu."])
    page = monde.lancer()
    for secret in (SECRET, TOPIC, "un jeton"):
        assert secret not in vu.stdout + page.stdout + page.stderr, secret
    monde.regler("HERMES_GATEWAY_CLE", "")
    assert "# à moi\nINCONNUE=1\n" in monde.reglages.read_text() and "CLE" not in monde.reglages.read_text()
    monde.reglages.chmod(0o640)
    faits = json.loads(monde.lancer("--json").stdout)
    egal((faits["reglages"], faits["plaintes"]),
         ({}, [f"« {monde.reglages} » est ouvert à d'autres que vous : rien n'y est lu. Fermez-le par « chmod 600 », et "
               "changez les secrets qu'il contient."]))
    egal(monde.lancer("regler", "HERMES_GATEWAY_CLE", entree="x\n").returncode, 2)
    monde.reglages.chmod(0o600)
    egal(monde.lancer("regler", "HERMES_NTFY_TOPIC").returncode, 2, "nothing came: nothing is taken out")
    assert TOPIC in monde.reglages.read_text()


def avis():
    monde, ntfy = Monde(), Ntfy()
    dit = {"HERMES_NTFY_SERVEUR": ntfy.url, "HERMES_NTFY_TOPIC": TOPIC, "HERMES_NTFY_JETON": "j"}
    ecoute = monde.partir("ecouter", **dit)
    assert ecoute.stderr.readline() == "À l'écoute de cana…(26).\n"
    egal(ntfy.abonnements, [(f"/{TOPIC}/sse", "Bearer j")])
    ntfy.publier("un \x1b[31m avis\nsur deux lignes", "Titre")
    ntfy.dire("data: {pas du json\n\ndata: " + json.dumps({"event": "message", "id": "x", "topic": "autre", "message": "non"})
              + "\n\n")
    ntfy.publier("le second")
    egal(ecoute.stdout.readline()[19:], "  Titre : un \\u001b[31m avis sur deux lignes\n")
    egal(ecoute.stdout.readline()[19:], "  le second\n")
    ntfy.couper()
    assert ecoute.stderr.readline().startswith("Rien n'est entendu : "), "cut"
    ecoute.send_signal(signal.SIGINT)
    egal(ecoute.wait(5), 0)
    ecoute = monde.partir("ecouter", "--json", **dit)
    egal(json.loads(ecoute.stdout.readline())["evenement"], "ecoute")
    ntfy.publier("tôt", "T", ident="n42")
    ligne = json.loads(ecoute.stdout.readline())
    egal((ligne["id"], ligne["titre"], ligne["texte"]), ("n42", "T", "tôt"))
    ecoute.send_signal(signal.SIGTERM)
    egal(ecoute.wait(5), 0)
    ntfy.statut = 403
    fin = monde.lancer("ecouter", **dit)
    egal((fin.returncode, fin.stderr), (1, "L'oreille d'Hermès se tait : le serveur refuse l'accès à ce canal.\n"))
    fin = monde.lancer("ecouter")
    egal((fin.returncode, fin.stderr), (2, "Aucun topic ntfy n'est réglé : l'oreille reste fermée.\n"))
    ntfy.fermer()


def messages():
    monde, passerelle = Monde(), Passerelle()
    dit = {"HERMES_GATEWAY_URL": passerelle.url + "/v1", "HERMES_GATEWAY_CLE": SECRET, "HERMES_GATEWAY_MODEL": " nova "}
    cas = [  # the message, status, output, errors
        ("bonjour", 0, "Bien reçu : bonjour\n", ""),
        ("outil", 0, "Bien reçu : outil\n", "→ terminal /tmp/essai\n"),
        ("ordures", 0, "Bien reçu : ordures\n", ""),
        ("hostile", 0, "\\u001b]0;pris\\u0007\\u001b[2Jfin\\u202e\\u009b31mBien reçu : hostile\n", ""),
        ("erreur", 0, "Bien reçu : erreur\n", "Erreur d'Hermès : plus de crédit\n"),
        ("erreur seule", 1, "", "Erreur d'Hermès : plus de crédit\n"),
        ("accord a1", 0, "Je n'efface rien.Bien reçu : accord a1\n",
         "Hermès demande votre accord pour terminal\nEffacer le dossier\nrm -rf essai\n"
         "Personne ne peut répondre ici : c'est refusé.\nRefusé.\n"),
        ("statut 403", 1, "", "La passerelle d'Hermès refuse cette clé (HTTP 403) : HERMES_GATEWAY_CLE est à revoir.\n"),
        ("statut 500", 1, "", "La passerelle d'Hermès a échoué (HTTP 500). Rien n'est redemandé.\n"),
        ("coupe-avant", 3, "", "La réponse est coupée : la liaison réseau a été coupée. "
         "Hermès n'avait encore rien fait : redemandez.\n"),
        ("texte-coupe", 3, "Je commence \n", "La réponse est coupée : la liaison réseau a été coupée. "
         "Hermès n'avait encore rien fait : redemandez.\n"),
        ("outil-coupe", 1, "", "→ terminal /tmp/essai\nLa réponse est coupée : la liaison réseau a été coupée. "
         "Hermès a pu agir : rien n'est redemandé.\n"),
    ]
    for message, *attendu in cas:
        fait = monde.lancer("parler", message, **dit)
        egal([fait.returncode, fait.stdout, fait.stderr], attendu, message)
    egal(passerelle.textes(), [c[0] for c in cas], "each once")
    egal([passerelle.recus[i]["session"] for i in (0, 1)], [None, "s1"])
    egal(passerelle.recus[0]["modele"], "nova")
    egal({v["approved"] for _, v in passerelle.verdicts}, {False})
    # A forgotten session is begun anew, once, with the same message.
    passerelle.oubliees.add("s1")
    fait = monde.lancer("parler", "encore", **dit)
    egal((fait.returncode, fait.stderr), (0, "Hermès ne connaît plus cette conversation : une nouvelle commence.\n"))
    egal([(r["texte"], r["session"]) for r in passerelle.recus[-2:]], [("encore", "s1"), ("encore", None)])
    fait = monde.lancer("parler", "--json", entree="outil\n", **dit)
    lignes = [json.loads(l) for l in fait.stdout.splitlines()]
    egal([l["evenement"] for l in lignes],
         ["note", "session", "session", "outil", "outil_fini", "texte", "texte", "texte", "fin"])
    egal((lignes[-1], fait.stderr), ({"evenement": "fin", "issue": "finie", "session": "s1"}, ""))
    fichier, = monde.conversations.glob("*.json")
    egal(fichier.stat().st_mode & 0o777, 0o600)
    # Two at once are both kept; what waits for a conversation on a terminal still does.
    garde = json.loads(fichier.read_text())
    fichier.write_text(json.dumps({**garde, "enFile": ["plus tard"]}))
    ensemble = [monde.partir("parler", f"silence 0.{n}", **dit) for n in (4, 5, 6)]
    egal([p.wait(10) for p in ensemble], [0, 0, 0])
    apres = json.loads(fichier.read_text())
    egal((len(apres["fil"]), apres["enFile"]), (len(garde["fil"]) + 6, ["plus tard"]))
    fichier.write_text(json.dumps(garde))
    fait = monde.lancer("parler", entree="x" * (4 * 2**20 + 1), **dit)
    egal((fait.returncode, fait.stderr), (2, "Le message est trop long : 4 Mio au plus. Rien n'est parti.\n"))
    for variables, statut, phrase in (
            ({}, 2, "Rien ne dit comment joindre Hermès : réglez HERMES_GATEWAY_URL (une adresse) ou HERMES_GATEWAY_HOTE (une "
                    "machine, par ssh).\n"),
            ({"HERMES_GATEWAY_URL": "http://10.0.0.1/v1"}, 2, "L'adresse de la passerelle doit être en https:// (http:// n'est "
                                                             "toléré que sur la machine même).\n"),
            ({"HERMES_GATEWAY_URL": passerelle.url + "/v1"}, 1, "La passerelle d'Hermès refuse qui n'a pas de clé (HTTP 401) : "
                                                               "HERMES_GATEWAY_CLE est à revoir.\n"),
            ({"HERMES_GATEWAY_URL": "http://127.0.0.1:1/v1"}, 3,
             "La réponse est coupée : la passerelle d'Hermès est injoignable. Hermès n'avait encore rien fait : redemandez.\n")):
        fait = monde.lancer("parler", "x", **variables)
        egal((fait.returncode, fait.stderr), (statut, phrase))
    passerelle.oubliees.clear()
    # Ctrl-C interrupts the turn; on a terminal somebody answers.
    parle = monde.partir("parler", "silence 20", **dit)
    egal(parle.stdout.read(11), "Je cherche ")
    parle.send_signal(signal.SIGINT)
    egal((parle.wait(5), parle.stderr.read()), (130, "Interrompu.\n"))
    maitre, esclave = pty.openpty()
    parle = subprocess.Popen([CLIENT, "hermes", "parler", "accord a2"], env=monde.variables | dit, stdin=esclave, stdout=esclave,
                             stderr=esclave)
    os.close(esclave)
    vu = b""
    while "effacé".encode() not in vu:
        assert select.select([maitre], [], [], 10)[0], vu
        vu += os.read(maitre, 4096)
        if b"[o/N]" in vu and b"o" != vu[-1:] and not passerelle.verdicts[-1][1]["approved"]:
            os.write(maitre, b"o\n")
            time.sleep(0.3)
    egal((parle.wait(5), passerelle.verdicts[-1][1]["approved"]), (0, True))
    passerelle.fermer()


for essai in (reglages, avis, messages):
    essai()
    print("vu :", essai.__name__)
