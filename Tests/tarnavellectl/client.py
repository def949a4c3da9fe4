#!/usr/bin/env python3
"""The real client in real shells and on a real terminal: client.py CLIENT BRIDGE TRIAL_DOOR

A scripted door gives the replies that the trial door never would, and keeps what it was sent. Terminals are
panes of a tmux on a private socket, which dies with the test.
"""
import atexit
import base64
import http.server
import json
import os
import pathlib
import re
import shlex
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time

try:
    import tomllib
except ImportError:  # before Python 3.11
    tomllib = None

CLIENT, PONT, ESSAI = map(os.path.abspath, sys.argv[1:4])
MAISON = pathlib.Path(tempfile.mkdtemp(prefix="tarnavelle-")).resolve()
atexit.register(shutil.rmtree, MAISON, ignore_errors=True)
MONDE = {"HOME": str(MAISON), "PATH": os.path.dirname(CLIENT) + ":" + os.environ["PATH"],
         "LC_ALL": "en_US.UTF-8" if sys.platform == "darwin" else "C.UTF-8", "TERM": "screen-256color"}
PNG = b"\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\xff"
HOSTILE = "\x1b]0;pris\a\x1b[2J\x9b31m\x7f\u202e\rfin"


class Porte(http.server.ThreadingHTTPServer):
    """Answers every call with `reponse` (bytes, or an object), keeps the bodies in `recus`."""

    def __init__(self):
        super().__init__(("127.0.0.1", 0), Appel)
        self.reponse, self.statut, self.recus, self.retenue = {"ok": True}, 200, [], threading.Event()
        self.retenue.set()
        threading.Thread(target=self.serve_forever, daemon=True).start()
        self.url = f"http://127.0.0.1:{self.server_port}"
        self.monde = MONDE | {"TARNAVELLE_CONTROL_URL": self.url,
                              "TARNAVELLE_CONTROL_TOKEN": "secret"}

    def handle_error(self, *_):
        """A client that is stopped hangs up: that is its right."""


class Appel(http.server.BaseHTTPRequestHandler):
    def do_POST(self):
        porte = self.server
        porte.recus.append(json.loads(self.rfile.read(int(self.headers["Content-Length"]))))
        porte.patience = self.headers["X-Tarnavelle-Patience"]
        porte.retenue.wait(60)
        corps = porte.reponse if isinstance(porte.reponse, bytes) else json.dumps(porte.reponse).encode()
        self.send_response(porte.statut)
        self.send_header("Content-Length", str(len(corps)))
        self.end_headers()
        self.wfile.write(corps)

    def log_message(self, *_):
        pass


def lancer(*mots, monde=MONDE, **options):
    fait = subprocess.run([CLIENT, *mots], env=monde, timeout=60, capture_output=True, cwd=MAISON, **options)
    return fait.returncode, fait.stdout, fait.stderr.decode()


def egal(obtenu, attendu, *contexte):
    assert obtenu == attendu, f"{contexte}\n    obtenu  : {obtenu!r}\n    attendu : {attendu!r}"


def exemples(porte):
    """The guide's own lines, in a real shell."""
    attendus = [
        {"action": "etat"}, {"action": "focus", "cible": "Merlin"},
        {"action": "dicter", "texte": "lance les tests", "agent": "Milan"},
        {"action": "lire_terminal", "agent": "Merlin", "depuis_prompt": True},
        {"action": "attendre", "agent": "Merlin", "jusqu_a": "fini", "timeout_s": "120"},
        {"action": "shell", "commande": "npm test"}, {"action": "ouvrir_web", "cible": "example.com"},
        {"action": "ouvrir_web", "cible": f"{MAISON}/rapport.html"}, {"action": "capture", "chemin": "/tmp/canvas.png"},
        {"action": "retiens", "texte": "le port dev est 5173"}, {"action": "rappelle", "requete": "port", "limite": "3"},
        {"action": "fini", "note": "lot C livré", "agent": "Merlin"},
        {"action": "bloque", "raison": "il me faut le mot de passe staging", "agent": "Merlin"}]
    _, guide, _ = lancer("guide")
    lignes = re.findall(r"^- `(\$TARNAVELLECTL .*)`$", guide.decode(), re.M)
    egal(len(lignes), 13)
    for ligne, attendu in zip(lignes, attendus):
        porte.recus.clear()
        subprocess.run(["sh", "-c", ligne], check=True, timeout=60, stdout=subprocess.DEVNULL, cwd=MAISON,
                       env=porte.monde | {"TARNAVELLECTL": CLIENT, "TARNAVELLE_NODE_ID": " Merlin "})
        egal((porte.recus, porte.patience), ([attendu], "130" if attendu["action"] == "attendre" else None), ligne)
    # Paths are this machine's and this folder's, but where another machine is named.
    (MAISON / "page.html").touch()
    indice = "tarnavellectl : « page.html » est envoyé tel quel. Pour le fichier de ce nom, écrivez « ./page.html ».\n"
    for mots, valeur, dit in ((["ouvrir_web", "page.html"], "page.html", indice), (["ouvrir_web", "a/b"], "a/b", ""),
                              (["capture", "Merlin", "p.png"], f"{MAISON}/p.png", ""),
                              (["ouvrir_agent", "codex", "./x"], f"{MAISON}/x", ""),
                              (["ouvrir_agent", "codex", "./x", "--hote=mac"], "./x", "")):
        porte.recus.clear()
        egal(lancer(*mots, monde=porte.monde)[2], dit, mots)
        assert valeur in porte.recus[0].values(), (mots, porte.recus)


def sur_un_tube(porte):
    brut = b' {"ok":true,\n"data":[{"n":"\xc2\x9b","b":1},{"n":"x","b":22}], "spoken_text":" "}\r\n'
    refus = b'{"ok":false,"error":"Non : \\u001b[31m\xc2\x9b."}'
    dit = 'tarnavellectl : Non : \\u001b[31m\\u009b.\n'
    origine = ("tarnavellectl : Son adresse, {}/action, vient de TARNAVELLE_CONTROL_URL. "
               "« tarnavellectl porte » en dit plus.\n")
    illisible = "tarnavellectl : La réponse de la porte est illisible (HTTP {}).\n" + origine.format(porte.url)
    cas = [
        ({"ok": True, "spoken_text": "Fait.\n", "data": 1}, 500, ["etat"], (0, b"Fait.\n", "")),
        ({"ok": True, "spoken_text": "Fait.", "data": [1, "é"]}, 200, ["etat", "--donnees"], (0, "1\né\n".encode(), "")),
        (brut, 200, ["etat"], (0, b"b   n\n1   \\u009b\n22  x\n", "")),
        (brut, 200, ["etat", "--json"], (0, brut, "")),
        (refus, 200, ["etat"], (1, b"", dit)),
        (refus, 401, ["etat", "--json"], (1, refus, dit)),
        ({"ok": False, "error": "Verbe inconnu : « journal »."}, 200, ["journal"],
         (1, b"", "tarnavellectl : Cette porte n'est pas celle d'un plateau de terminaux (tarnavelle-plateau) : elle ne sait "
          "pas dire « journal ».\n")),
        (refus, 200, ["etta"], (1, b"", dit + "tarnavellectl : Vouliez-vous dire etat ?\n")),
        ({"ok": False, "error": " "}, 503, ["etat"],
         (1, b"", "tarnavellectl : La porte a refusé sans dire pourquoi (HTTP 503).\n")),
        (b"<html>\xff", 502, ["etat", "--json"], (3, b"", illisible.format(502))),
        ({"ok": True}, 200, ["focus", "a", "b\n"],
         (0, b"C'est fait.\n", "tarnavellectl : De trop, et laissé de côté : « b\\n ».\n")),
        ({"ok": True, "spoken_text": "Photo prise.", "data": {"p": "iVBORw0KGgo*"}}, 200, ["capture", "--inline"],
         (3, b"", "tarnavellectl : La réponse de la porte ne contient pas de photo lisible.\n")),
    ]
    for reponse, statut, mots, attendu in cas:
        porte.reponse, porte.statut = reponse, statut
        egal(lancer(*mots, monde=porte.monde), attendu, mots, reponse)
    porte.reponse, porte.statut = {"ok": True, "data": {"p": base64.b64encode(PNG).decode()}}, 200
    egal(lancer("capture", "--inline", "--chemin", "p.png", monde=porte.monde), (0, f"{MAISON}/p.png\n".encode(), ""))
    egal((MAISON / "p.png").read_bytes(), PNG)
    with open(os.devnull, "rb") as refuse:
        fait = subprocess.run([CLIENT, "etat"], env=porte.monde, stdout=refuse, stderr=subprocess.PIPE, timeout=60)
    egal((fait.returncode, fait.stderr.decode()), (3, "tarnavellectl : Impossible d'écrire sur la sortie.\n"))
    # A closed stream does not become the door's connection.
    fait = subprocess.run(["sh", "-c", "tarnavellectl etat >&- 2>&-"], env=porte.monde, timeout=60)
    egal(fait.returncode, 3)

    # Told before anything is sent, and nothing on standard output.
    porte.recus.clear()
    for mots in ([], ["completions", "csh"], ["aide", "x"], ["mcp-config", "--fichier", "absent/x"], ["lire", b"\xff"]):
        code, sortie, erreurs = lancer(*mots, monde=porte.monde)
        egal((code, sortie, erreurs.startswith("tarnavellectl : ")), (2, b"", True), mots)
    egal(porte.recus, [])
    inconnu = "tarnavellectl : Verbe inconnu : « etta ». Vouliez-vous dire etat ?\n"
    with socket.create_server(("127.0.0.1", 0)) as coupante:
        coupe = f"http://127.0.0.1:{coupante.getsockname()[1]}"
        threading.Thread(target=lambda: [coupante.accept()[0].close() for _ in range(2)], daemon=True).start()
        for url, verbe_inconnu, raison in (
                ("", 2, "Porte introuvable"), ("127.0.0.1:1", 2, "Porte introuvable"),
                ("ftp://127.0.0.1", 2, "La porte n'a pas répondu : son adresse est inutilisable, il faut http://HÔTE:PORT. "
                 "Rien n'a été envoyé.\n" + origine.format("ftp://127.0.0.1")),
                ("http://127.0.0.1:1", 2, "La porte n'a pas répondu : le serveur n'accepte pas la connexion. "
                 "Rien n'a été envoyé.\n" + origine.format("http://127.0.0.1:1")),
                (coupe, 3, "La porte n'a pas répondu : la connexion a été coupée. Le verbe a pu être exécuté.\n"
                 + origine.format(coupe))):
            monde = MONDE | {"TARNAVELLE_CONTROL_URL": url}
            code, sortie, erreurs = lancer("etat", "--json", monde=monde)
            egal((code, sortie, erreurs.startswith("tarnavellectl : " + raison)), (3, b"", True), url, erreurs)
            egal(lancer("etta", monde=monde), (verbe_inconnu, b"", inconnu + erreurs), url)


def lus(forme, texte):
    """What a program of that form reads: the bridge, its variables with the names passed on, and its approvals."""
    if forme == "codex":
        mots = shlex.split(texte)
        egal(set(mots[0::2]), {"-c"})
        lu = tomllib.loads("\n".join(mots[1::2]))["mcp_servers"]["tarnavelle"]
        return lu["command"], lu.get("env", {}) | dict.fromkeys(lu.get("env_vars", []), ...), [
            lu.get("default_tools_approval_mode"), *sorted(lu.get("tools", {}))]
    lu = json.loads(texte)
    if forme == "opencode":
        egal(next(iter(lu["permission"])), "tarnavelle_*")  # the last rule that matches wins
        return *lu["mcp"]["tarnavelle"]["command"], lu["mcp"]["tarnavelle"].get("environment", {}), [
            lu["permission"].pop("tarnavelle_*"), *(nom.removeprefix("tarnavelle_") for nom in lu["permission"])]
    serveur = lu if forme == "serveur" else lu["mcpServers"]["tarnavelle"]
    egal((serveur["args"], serveur.get("alwaysLoad")), ([], None if forme == "gemini" else True))
    noms = lu.get("tools", {}).get("allowed", [])
    return serveur["command"], serveur["env"], [
        serveur.get("trust"), *sorted(nom.removeprefix("mcp_tarnavelle_") for nom in noms)]


def colles(forme, dit):
    """The same, of what the lines to paste give the program in a real shell; nothing when there is no line."""
    (MAISON / "recus").write_text("")
    for ligne in dit.partition("À coller :\n")[2].partition("Pour durer")[0].splitlines():
        subprocess.run(["sh", "-c", ligne], check=True, timeout=60, cwd="/",
                       env=MONDE | {"PATH": f"{MAISON}/faux:{MONDE['PATH']}"})
    recus = [json.loads(ligne) for ligne in (MAISON / "recus").read_text().splitlines()]
    if not recus:
        return None
    (mots, texte), *_ = recus
    if forme == "claude":
        donne = mots[0].removeprefix("--mcp-config=")
        texte = donne if donne.startswith("{") else open(donne).read()
    elif forme == "serveur":
        *debut, texte = mots
        egal(debut, ["mcp", "add-json", "--scope", "user", "tarnavelle"])
    elif forme == "codex":
        texte = shlex.join(mots)
    elif forme == "gemini":
        *options, nom, pont = mots
        env = dict(o.split("=", 1) for avant, o in zip(options, options[1:]) if avant == "-e")
        texte = json.dumps({"mcpServers": {nom: {
            "args": [], "command": pont, "env": env, "trust": "--trust" in options or None}}})
    permis = [nom for m, _ in recus for mot in m if mot.startswith("--allowed")
              for nom in mot.partition("=")[2].split(",")]
    pont, variables, approuve = lus(forme, texte)
    return pont, variables, approuve + sorted(re.sub("^mcp_+tarnavelle_+", "", nom) for nom in permis)


def configuration(essai):
    """What is printed, and what is pasted, is what the programs need to start a bridge that finds the door."""
    (MAISON / "faux").mkdir()
    for nom in ("claude", "codex", "gemini", "opencode"):
        (MAISON / "faux" / nom).write_text(f"""#!{sys.executable}
import json, os, sys
fichier = os.environ.get("OPENCODE_CONFIG")
with open({str(MAISON / "recus")!r}, "a") as recus:
    print(json.dumps([sys.argv[1:], open(fichier).read() if fichier else os.environ.get("OPENCODE_CONFIG_CONTENT")]), file=recus)
""")
        (MAISON / "faux" / nom).chmod(0o755)
    pont = str(MAISON / "l'a \"b\" \\ $HOME `id` é\u0301🦅")
    os.symlink(PONT, pont)
    monde = essai | {"TARNAVELLE_NODE_ID": "Merlin", "TARNAVELLE_MCP_SERVER": pont}
    endpoint = json.loads((MAISON / "Library/Application Support/Tarnavelle/porte-commande.json").read_text())
    adresse, jeton, agent = "TARNAVELLE_CONTROL_URL", "TARNAVELLE_CONTROL_TOKEN", "TARNAVELLE_NODE_ID"
    ailleurs = monde | {adresse: "http://127.0.0.1:1/action", jeton: "s'ec\"ret"}
    fermee = {"HOME": "/nulle-part"}
    lecture = sorted(["trv_etat", "trv_lire", "trv_resumer", "trv_rappelle", "trv_lire_terminal", "trv_taches",
                      "trv_attendre", "trv_guide"])
    renvoi = {jeton: "$" + jeton}
    for forme, herite, herite_ailleurs, rien, tout in (
            ("claude", {}, {}, None, [None, "mcp__tarnavelle"]), ("serveur", {}, {}, None, [None, "mcp__tarnavelle"]),
            ("codex", {agent: ...}, dict.fromkeys([adresse, jeton, agent], ...), None, ["approve"]),
            ("gemini", renvoi, renvoi, None, [True]), ("opencode", {}, {}, "ask", ["allow"])):
        if forme == "codex" and not tomllib:
            print("tomllib manque (Python 3.11) : les mots de codex ne sont pas relus.")
            continue

        def configurer(*options, monde=monde):
            code, texte, dit = lancer("mcp-config", "--" + forme, *options, monde=monde)
            egal(code, 0, forme, options, dit)
            return texte.decode(), dit
        for options, approuve in (([], [rien]), (["--approuver=tout"], tout),
                                  (["--approuver", "lecture"], [rien, *lecture])):
            texte, dit = configurer(*options)
            egal(colles(forme, dit), (pont, herite, approuve), forme, options)
            # claude's configuration has no room for what is approved: it stands in the line.
            egal(lus(forme, texte), (pont, herite, [None] if tout[0] is None else approuve), forme, options)
            # The door may be closed.
            egal(configurer(*options, monde=monde | fermee)[0], texte)
        texte, dit = configurer("--etendu")
        for _, variables, _ in (lus(forme, texte), colles(forme, dit)):
            egal(variables, herite | {"TARNAVELLE_MCP_ETENDU": "1"}, forme)
        texte, dit = configurer(monde=ailleurs)
        egal(lus(forme, texte)[1], herite_ailleurs)
        assert "n'est connue que de l'environnement" in dit and "s'ec" not in dit, dit
        meme = {adresse: f"http://127.0.0.1:{endpoint['port']}/", jeton: endpoint["token"]}
        egal(configurer(monde=monde | meme), configurer())
        # Frozen: in the text or in a file, never in what is said.
        for qui, url, secret in ((monde, meme[adresse][:-1], meme[jeton]),
                                 (ailleurs, "http://127.0.0.1:1", "s'ec\"ret")):
            fige = pont, {adresse: url, jeton: secret, agent: "Merlin"}, [rien]
            texte, dit = configurer("--fige", monde=qui)
            egal((lus(forme, texte), colles(forme, dit), secret in dit), (fige, None, False), dit)
            dit = configurer("--fige", "--fichier", "mcp l'a", monde=qui)[1]
            egal((lus(forme, (MAISON / "mcp l'a").read_text()), secret in dit), (fige, False), dit)
            egal(colles(forme, dit), None if forme in ("serveur", "gemini") else fige)
        egal(lancer("mcp-config", "--" + forme, "--fige", monde=monde | fermee)[:2], (3, b""))
    # The usual form is claude's.
    egal(lancer("mcp-config", monde=monde), lancer("mcp-config", "--claude", "--codex=false", monde=monde))
    for mots, raison in ((["--codex", "--claude"], "Une forme à la fois : --claude ou --codex."),
                         (["codex"], "« codex » serait ici le nom d'un fichier. L'option s'écrit --codex, ce fichier "
                                     "./codex."),
                         (["--approuver", "ecriture"], "--approuver vaut lecture ou tout, pas « ecriture ».")):
        egal(lancer("mcp-config", *mots, monde=monde), (2, b"", f"tarnavellectl : {raison}\n"))

    texte = lancer("mcp-config", monde=monde)[1]
    lisez_moi = (pathlib.Path(__file__).parents[2] / "README.md").read_text()
    egal(lisez_moi.partition("```json\n")[2].partition("```")[0], texte.decode().replace(
        json.dumps(pont, ensure_ascii=False), '"/path/to/tarnavelle-mcp"'))
    cible = MAISON / "cible"
    cible.write_text("intacte")
    (MAISON / "lien").symlink_to(cible)
    for fichier in ("mcp.json", "lien"):
        egal(lancer("mcp-config", "--fichier", fichier, monde=monde)[:2], (0, f"{MAISON}/{fichier}\n".encode()))
        egal(((MAISON / fichier).read_bytes(), (MAISON / fichier).lstat().st_mode), (texte, 0o100600), fichier)
    egal(cible.read_text(), "intacte")
    os.mkfifo(MAISON / "tube")
    for fichier, raison in (("tube", "/tube : ce n'est pas un fichier ordinaire"), (".", "/ : c'est un dossier"),
                            ("~/tube", "/tube : ce n'est pas un fichier ordinaire")):
        egal(lancer("mcp-config", "--fichier", fichier, monde=monde | {"HOME": str(MAISON)}),
             (2, b"", f"tarnavellectl : Impossible d'écrire {MAISON}{raison}.\n"))
    assert (MAISON / "tube").is_fifo()
    appel = {"jsonrpc": "2.0", "id": 1, "method": "tools/call", "params": {"name": "trv_fini", "arguments": {}}}
    fait = subprocess.run([lus("claude", texte)[0]], input=json.dumps(appel), capture_output=True, encoding="utf-8",
                          env=MONDE | {"TARNAVELLE_NODE_ID": "Merlin"}, timeout=60)
    assert "Merlin a fini." in fait.stdout, fait
    code, sortie, erreurs = lancer("mcp-config", monde=monde | {"TARNAVELLE_MCP_SERVER": "/dev/null"})
    egal((code, sortie, "TARNAVELLE_MCP_SERVER" in erreurs), (2, b"", True))
    guides = MAISON / "guides"
    guides.mkdir()
    egal(lancer("guide", "--fichier", monde=MONDE | {"TARNAVELLE_NODE_ID": "a/b c", "TARNAVELLE_AGENT_GUIDE": str(
        guides / "guide-7.md")}), (0, f"{guides}/guide-a-b c.md\n".encode(), ""))
    assert endpoint["token"] not in lancer("guide", monde=monde)[1].decode()


def etat_de_la_porte(essai, porte):
    fichier = MAISON / "Library/Application Support/Tarnavelle/porte-commande.json"
    endpoint = json.loads(fichier.read_text())
    url = "http://127.0.0.1:{port}".format_map(endpoint)

    def faits(**variables):
        code, sortie, erreurs = lancer("--json", "porte", monde=essai | variables)
        lisible = lancer("porte", monde=essai | variables)
        egal((lisible[0], erreurs, lisible[2]), (code, "", ""))
        assert endpoint["token"].encode() not in sortie + lisible[1]
        dits = json.loads(sortie)
        egal(dits.pop("fichier"), str(fichier))
        return code, dits, dits.pop("raison", "")

    du_fichier = {"source": "fichier", "adresse": url + "/action", "pid": endpoint["pid"]}
    variable = {"source": "variable", "adresse": url + "/action"}
    egal(faits(), (0, du_fichier | {"vivant": True, "repond": True, "jeton_accepte": True}, ""))
    egal(faits(TARNAVELLE_CONTROL_URL=url, TARNAVELLE_CONTROL_TOKEN="autre"),
         (1, variable | {"repond": True, "jeton_accepte": False}, "la porte refuse (HTTP 401) : Jeton absent ou faux."))
    porte.reponse, porte.statut = {"ok": False, "error": "Bearer s3cr3t refusé"}, 401
    egal(lancer("focus", "Merlin", monde=essai | {"TARNAVELLE_CONTROL_URL": porte.url, "TARNAVELLE_CONTROL_TOKEN": "s3cr3t"}),
         (1, b"", "tarnavellectl : Bearer … refusé\n"))
    porte.reponse, porte.statut = b"<html>", 404
    egal(faits(TARNAVELLE_CONTROL_URL=porte.url), (3, variable | {"adresse": porte.url + "/action", "repond": False},
                                                   "HTTP 404, d'un serveur qui n'est pas une porte"))
    entier = fichier.read_bytes()
    for pid in (0, -1, 2**22 + 1):
        fichier.write_text(json.dumps(endpoint | {"pid": pid, "port": 1}))
        mort = du_fichier | {"adresse": "http://127.0.0.1:1/action", "pid": pid, "vivant": False, "repond": False}
        egal(faits(), (3, mort, "le serveur n'accepte pas la connexion"))
    fichier.unlink()
    egal(faits(), (3, {"repond": False}, "pas de porte à appeler"))
    fichier.write_bytes(entier)


class Terminal:
    """A pane in which a program runs."""

    def __init__(self, *programme, monde, colonnes=70):
        self.socket, self.fois = tempfile.mktemp(dir=MAISON), 0
        self.tmux("-f/dev/null", "new-session", "-d", "-c", str(MAISON), "-x", str(colonnes), "-y", "40", *programme, monde=monde)
        self.tmux("set-option", "-g", "status", "off")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.tmux("kill-server", check=False)

    def tmux(self, *mots, monde=MONDE, check=True):
        fait = subprocess.run(["tmux", "-S", self.socket, *mots], env=monde, capture_output=True, encoding="utf-8")
        assert fait.returncode == 0 or not check, (mots, fait)
        return fait.stdout

    def ecran(self, *options):
        return self.tmux("capture-pane", "-p", *options)

    def taper(self, *touches):
        self.tmux("send-keys", *touches)

    def attendre(self, motif):
        limite = time.monotonic() + 30
        while not re.search(motif, self.ecran(), re.M):
            assert time.monotonic() < limite, f"{motif!r} n'est pas à l'écran :\n{self.ecran()}"
            time.sleep(0.02)
        return self.ecran()

    def faire(self, ligne):
        """The screen that one line gives, once it is over."""
        self.fois += 1
        self.taper("-l", f"clear; {ligne}; echo {self.fois}:$?")
        self.taper("Enter")
        return self.attendre(rf"^{self.fois}:\d+$")


def sur_un_terminal(porte):
    with Terminal("bash", "--norc", monde=porte.monde | {"PS1": "$ "}) as t:
        t.tmux("select-pane", "-T", "titre")
        fiche = {"nom": "漢字", "note": "n" * 300}
        porte.reponse = {"ok": True, "data": [fiche, {"nom": "e\u0301te\u0301", "note": "fin"}]}
        ecran = t.faire("tarnavellectl taches").splitlines()
        egal(ecran[:4], ["nom   note", "漢字  " + "n" * 63 + "…", "e\u0301te\u0301   fin", "1:0"])
        assert "\x1b[1mnom   note" in t.ecran("-e"), t.ecran("-e")
        for couleurs, refus in (("", True), ("NO_COLOR=1 ", False), ("TERM=dumb ", False)):
            t.faire(f"{couleurs}tarnavellectl focus")
            egal("\x1b[31mtarnavellectl" in t.ecran("-e"), refus, couleurs)

        montre = "\\u001b]0;pris\\u0007\\u001b[2J\\u009b31m\\u007f\\u202e"
        porte.reponse = json.dumps({"ok": True, "spoken_text": HOSTILE, "data": {HOSTILE: [{HOSTILE: HOSTILE}]}},
                                   ensure_ascii=False).encode()
        for option in ("", " --donnees", " --json"):
            assert montre in t.faire("tarnavellectl etat" + option).replace("\n", ""), (option, t.ecran())
        porte.reponse = {"ok": False, "error": HOSTILE}
        assert montre in t.faire(r"tarnavellectl $'x\e[2J'").replace("\n", ""), t.ecran()
        egal(t.tmux("display", "-p", "#{pane_title}"), "titre\n")

        porte.reponse = {"ok": True, "data": base64.b64encode(PNG).decode()}
        assert "M-^IPNG^M\n^Z" in t.faire("tarnavellectl capture --inline | cat -v; echo"), t.ecran()
        assert "capture-" in t.faire("tarnavellectl capture --inline"), t.ecran()
        (ecrite,) = MAISON.glob("capture-*.png")
        egal(ecrite.read_bytes(), PNG)

        secret = t.faire("tarnavellectl mcp-config --fige")
        assert '"secret"' in secret and "le jeton de la porte" in secret, secret
        assert "le jeton de la porte" not in t.faire("tarnavellectl mcp-config --fige | tail -n 1"), t.ecran()
        usage = t.faire("tarnavellectl attendre --help")
        assert re.search(r"AGENT \[JUSQU_A\] .*-h de\n +même", usage, re.DOTALL), usage

        porte.retenue.clear()
        porte.recus.clear()
        t.taper("-l", "tarnavellectl attendre Merlin")
        t.taper("Enter")
        while not porte.recus:
            time.sleep(0.01)
        depart = time.monotonic()
        t.taper("C-c")
        t.taper("-l", "echo statut=$?")
        t.taper("Enter")
        t.attendre("^statut=130$")
        assert time.monotonic() - depart < 5
        porte.retenue.set()


def completions(porte):
    agents = ["Merlin", "Grand Duc", "Épervier", "$(touch mechant)", "a\x1b[2J", "-x"]
    porte.reponse = {"ok": True, "data": {"agents": [{"nom": nom} for nom in agents], "crew": ["Forge"]}}
    for programme, charger in (
            (["bash", "--norc"], 'eval "$(tarnavellectl completions bash)"'),
            (["zsh", "-f"], 'autoload -U compinit; compinit -u; eval "$(tarnavellectl completions zsh)"'),
            (["fish", "--no-config"], "tarnavellectl completions fish | source")):
        with Terminal(*programme, monde=porte.monde, colonnes=120) as t:
            t.taper("-l", charger + "; clear; echo pr''et")
            t.taper("Enter")
            t.attendre("^pret$")
            for tape, complete in (("env", "envoyer_touches"), ("mcp", "mcp-config"), ("aide dif", "aide diffuser"),
                                   ("lire_terminal --dep", "--depuis-prompt"), ("lire Me", "lire Merlin"),
                                   ("dicter 'x y' Gr", "'x y' Grand\\ Duc"), ("focus Ép", "focus Épervier"),
                                   ("lire --agent=Me", "--agent=Merlin"), ("lire --agent Gr", "Grand\\ Duc")):
                t.taper("-l", "tarnavellectl " + tape)
                t.taper("Tab")
                t.attendre(re.escape(complete) + " *$" if "=" not in tape else re.escape(complete))
                t.taper("C-u", "C-l")
            t.taper("-l", "tarnavellectl lire ")
            t.taper("Tab", "Tab")
            liste = t.attendre("Merlin")
            assert not re.search(r"mechant|\\u001b|Forge", liste), liste
    for mot, complete in (("--agent=Gr", "Grand\\ Duc"), ("--agent='Gr", "Grand Duc")):  # whole words, as bash 3 has them
        ligne = 'eval "$(tarnavellectl completions bash)"; COMP_WORDS=(tarnavellectl lire "$1") COMP_CWORD=2 COMP_WORDBREAKS=='
        fait = subprocess.run(["bash", "-c", ligne + '; _tarnavellectl; echo "${COMPREPLY[*]}"', "bash", mot], env=porte.monde,
                              capture_output=True, encoding="utf-8", timeout=60)
        egal((fait.stdout, fait.stderr), (complete + "\n", ""), mot)
    assert not (MAISON / "mechant").exists()


def manuel():
    page = MAISON / "tarnavellectl.1"
    page.write_bytes(lancer("man")[1])
    lecteur = ["man", "--warnings", "-P", "cat", "-l"]
    if b"--warnings" not in subprocess.run(["man", "--help"], env=MONDE, capture_output=True).stdout:
        lecteur = ["mandoc", "-T", "utf8", "-O", "width=100", "-W", "error"]
    lu = subprocess.run([*lecteur, page], env=MONDE | {"MANWIDTH": "100"}, capture_output=True, timeout=60, encoding="utf-8")
    egal((lu.returncode, lu.stderr), (0, ""))
    texte = re.sub(".\b", "", lu.stdout)
    for attendu in ("tarnavellectl - les verbes du cockpit", "--depuis-prompt", "screenshot, window_screenshot", "\\u001b",
                    'tarnavellectl dicter "lance les tests" --agent Milan', "~/Library", "l'écran"):
        assert attendu in texte, (attendu, texte)


def session(essai):
    """A new user's session with the trial door."""
    for mots, attendu in (
            (["etat"], (0, b"Sc\xc3\xa8ne Sources. Merlin : au repos. Milan : au repos (Atelier).\n", "")),
            (["ouvrir-agent", "--cli=codex"], (0, b"Harfang est ouvert : codex dans ~/Sources.\n", "")),
            (["type", "lance", "Harfang"], (0, "Envoyé à Harfang.\n".encode(), "")),
            (["attendre", "Harfang", "--timeout-s", "20"], (0, "Harfang s'est calmé.\n".encode(), "")),
            (["commande", "coupe la musique"], (1, b"", "tarnavellectl : pas encore câblé\n"))):
        egal(lancer(*mots, monde=essai), attendu, mots)
    egal(lancer("completions", "proposer", "lire", "", monde=essai)[1], b"Merlin\tagent\nHarfang\tagent\nMilan\tagent\n")


def crochet():
    """Whatever an agent's hook says, and wherever to, the agent is told nothing; hooks that fire at once lose nothing."""
    journal = MAISON / "crochets.jsonl"
    monde = MONDE | {"TARNAVELLE_CROCHETS": str(journal)}
    muet = (0, b"", "")
    for dit in (b"", HOSTILE.encode(), b"\xff{", b'{"prompt":"' + b"x" * 2**21):
        egal(lancer("crochet", "claude", "Stop", monde=monde, input=dit), muet, dit[:20])
    for ailleurs in ("/dev/full", "/nulle/part", str(MAISON)):
        egal(lancer("crochet", "claude", "Stop", monde=MONDE | {"TARNAVELLE_CROCHETS": ailleurs}, input=b"{}"), muet, ailleurs)
    egal(lancer("crochet", "claude", "Stop", input=b"{}"), muet)
    egal([json.loads(ligne)["hook_event_name"] for ligne in journal.open()], ["Stop"] * 4)
    dits = [json.dumps({"hook_event_name": "Stop", "prompt_id": str(n), "message": "m" * 900}).encode() for n in range(40)]
    fils = [subprocess.Popen([CLIENT, "crochet", "claude", "Stop"], env=monde, stdin=subprocess.PIPE) for _ in dits]
    for fil, dit in zip(fils, dits):
        fil.communicate(dit, timeout=60)
    egal(sorted(int(json.loads(ligne).get("prompt_id", -1)) for ligne in journal.open()), [-1] * 4 + list(range(40)))


def main():
    essai = subprocess.Popen([ESSAI], env=MONDE, stdout=subprocess.PIPE)
    try:
        essai.stdout.readline()
        session(MONDE)
        configuration(MONDE)
        with Porte() as porte:
            etat_de_la_porte(MONDE, porte)
            porte.shutdown()
    finally:
        essai.terminate()
        essai.wait()
    with Porte() as porte:
        exemples(porte)
        sur_un_tube(porte)
        sur_un_terminal(porte)
        completions(porte)
        porte.shutdown()
    manuel()
    crochet()
    print("tarnavellectl : tout va bien")


if __name__ == "__main__":
    main()
