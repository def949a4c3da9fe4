#!/usr/bin/env python3
"""What the injection adds to a launch, read by parsers of other makers: injection.py INJECT BRIDGE TRIAL_DOOR

Does what the two agent programs do: claude reads the JSON file that its argument names, codex splits each
"-c" override at its first "=" and reads the value as TOML; both then start the bridge with the command
and the variables found there, and nothing else. The bridge must find the trial door and say who calls.
"""
import json
import os
import pathlib
import subprocess
import sys
import tempfile

try:
    import tomllib
except ModuleNotFoundError:  # before Python 3.11
    import tomli as tomllib

HOSTILES = [
    "l'atelier", 'dit "oui"', "a\\b\\", "$HOME `id` $(id)", "deux\nlignes\tet plus\n", "a=b=c.d", "# [x]", "é\u0301🦅",
    "'''", '"""', "\\u0041\\n", " ", "{}/?*~!;&|<>",
]


def injecter(programme, **demande):
    sortie = subprocess.run([programme], input=json.dumps(demande).encode(), capture_output=True, check=True)
    return json.loads(sortie.stdout)


def cles_triees(paires):
    cles = [cle for cle, _ in paires]
    assert cles == sorted(cles), f"clés en désordre : {cles}"
    return dict(paires)


def comme_claude(injection):
    drapeau, chemin = injection["arguments"]
    assert drapeau == "--mcp-config", drapeau
    texte = pathlib.Path(chemin).read_text(encoding="utf-8")
    assert "\\/" not in texte, texte
    serveur = json.loads(texte, object_pairs_hook=cles_triees)["mcpServers"]["tarnavelle"]
    assert serveur.pop("args") == []
    return serveur


def comme_codex(injection):
    mots = injection["arguments"]
    assert mots[0::2] == ["-c"] * (len(mots) // 2), mots
    serveur = {"env": {}}
    for derogation in mots[1::2]:
        cle, valeur = derogation.split("=", 1)
        valeur = tomllib.loads("valeur = " + valeur)["valeur"]
        # The whole text is a TOML line too, the dotted key included.
        feuille = tomllib.loads(derogation)
        for partie in cle.split("."):
            feuille = feuille[partie]
        assert feuille == valeur, derogation
        *chemin, nom = cle.removeprefix("mcp_servers.tarnavelle.").split(".")
        assert chemin in ([], ["env"]), cle
        (serveur["env"] if chemin else serveur)[nom] = valeur
    return serveur


def declarer(injecteur, cli, config, valeurs):
    injection = injecter(injecteur, cli=cli, cheminConfig=str(config), **valeurs)
    config.write_text(injection["config"], encoding="utf-8")
    serveur = {"claude": comme_claude, "codex": comme_codex}[cli](injection)
    attendu = {"command": valeurs["binaireMCP"],
               "env": {"TARNAVELLE_CONTROL_URL": valeurs["url"], "TARNAVELLE_CONTROL_TOKEN": valeurs["token"],
                       "TARNAVELLE_NODE_ID": valeurs["nodeId"]}}
    attendu["env"] = {nom: valeur for nom, valeur in attendu["env"].items() if valeur}
    assert serveur == attendu, (cli, serveur, attendu)
    assert injection["environnement"] == attendu["env"], injection
    return serveur


def appeler(serveur, maison, outil, arguments):
    requetes = [{"jsonrpc": "2.0", "id": 1, "method": "initialize", "params": {}},
                {"jsonrpc": "2.0", "id": 2, "method": "tools/call", "params": {"name": outil, "arguments": arguments}}]
    sortie = subprocess.run([serveur["command"]], input="".join(json.dumps(r) + "\n" for r in requetes).encode(),
                            capture_output=True, env={"HOME": str(maison), **serveur["env"]}, timeout=60)
    assert sortie.returncode == 0 and not sortie.stderr, sortie
    accueil, appel = map(json.loads, sortie.stdout.splitlines())
    assert accueil["result"]["serverInfo"]["name"] == "tarnavelle-mcp", accueil
    return json.loads(appel["result"]["content"][0]["text"])


def main():
    injecteur, pont, porte = map(os.path.abspath, sys.argv[1:])
    jeton = "s'\"\\$`=#{}"
    with tempfile.TemporaryDirectory() as nom:
        dossier = pathlib.Path(nom)
        config = dossier / "l'atelier \"neuf\"\n" / "mcp é.json"
        config.parent.mkdir()
        # The bridge under a path that needs every escape.
        lien = config.parent / "mon\tpont \\ $HOME=é"
        lien.symlink_to(pont)
        essai = subprocess.Popen([porte, "--fichier", str(dossier / "porte.json"), "--jeton", jeton],
                                 stdout=subprocess.PIPE, encoding="utf-8")
        try:
            url = essai.stdout.readline().split(" : ")[1].strip()
            for cli in ("claude", "codex"):
                for texte in HOSTILES:
                    declarer(injecteur, cli, config,
                             {"binaireMCP": texte, "url": texte, "token": texte, "nodeId": texte})
                for vide in ("url", "token", "nodeId"):
                    declarer(injecteur, cli, config,
                             {"binaireMCP": "/pont", "url": "u", "token": "t", "nodeId": "n", vide: ""})

                base = {"binaireMCP": str(lien), "url": url, "token": jeton, "nodeId": "Merlin"}
                serveur = declarer(injecteur, cli, config, base)
                reponse = appeler(serveur, dossier, "trv_fini", {"note": "relu"})
                assert reponse["ok"] and reponse["spoken_text"] == "Merlin a fini : relu", reponse

                appelant = "l'é\"\\\t$x🦅"
                serveur = declarer(injecteur, cli, config, base | {"nodeId": appelant})
                reponse = appeler(serveur, dossier, "trv_fini", {})
                assert not reponse["ok"] and f"« {appelant} »" in reponse["error"], reponse

                serveur = declarer(injecteur, cli, config, base | {"token": jeton + "x"})
                reponse = appeler(serveur, dossier, "trv_etat", {})
                assert reponse == {"ok": False, "error": "Jeton absent ou faux."}, reponse
        finally:
            essai.terminate()
            essai.wait()
    print(f"injection : {2 * (len(HOSTILES) + 6)} configurations lues, 6 ponts démarrés")


main()
