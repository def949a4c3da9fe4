#!/usr/bin/env python3
"""What `cmake --install` lays down, and a program built on it: installation.py CMAKE BUILD FOLDER VERSION COMPILER

The same program finds the kit once by find_package and once by pkg-config.
"""
import os
import pathlib
import re
import shlex
import shutil
import subprocess
import sys

CMAKE, BATI, DOSSIER, VERSION, COMPILATEUR = sys.argv[1:]
EXEMPLE = pathlib.Path(__file__).parent / "exemple"
PREFIXE = pathlib.Path(DOSSIER) / "prefixe"
ATTENDU = f"{VERSION} {VERSION}\nétat trv_etat\nClaude Code -1\n1 1\n"
PRIVE = re.compile(r'#include [<"](boost|openssl)/|Interne\.hpp')


def faire(*mots, entree="", **variables):
    fait = subprocess.run([str(mot) for mot in mots], input=entree, env=os.environ | variables, capture_output=True,
                          encoding="utf-8")
    assert fait.returncode == 0, f"{mots} : {fait.stdout}{fait.stderr}"
    return fait.stdout


shutil.rmtree(DOSSIER, ignore_errors=True)
faire(CMAKE, "--install", BATI, "--prefix", PREFIXE)

dit = faire(PREFIXE / "bin/tarnavellectl", "--version")
assert dit == f"tarnavellectl {VERSION}\n", dit
dit = faire(PREFIXE / "bin/tarnavelle-mcp", entree='{"id":1,"method":"initialize"}')
assert f'{{"name":"tarnavelle-mcp","version":"{VERSION}"}}' in dit, dit
for chemin, temoin in (("man/man1/tarnavellectl.1", ".TH TARNAVELLECTL 1 "),
                       ("bash-completion/completions/tarnavellectl", "complete "),
                       ("zsh/site-functions/_tarnavellectl", "#compdef tarnavellectl\n"),
                       ("fish/vendor_completions.d/tarnavellectl.fish", "complete -c tarnavellectl ")):
    assert temoin in (PREFIXE / "share" / chemin).read_text(encoding="utf-8"), chemin

# Headers keep the networking library to themselves, and what is text holds for wherever it is moved.
entetes = list((PREFIXE / "include").rglob("*.hpp"))
assert entetes and not [e for e in entetes if PRIVE.search(e.name + e.read_text(encoding="utf-8"))], entetes
for fichier in PREFIXE.rglob("*"):
    if fichier.suffix in (".cmake", ".pc", ".hpp"):
        assert str(BATI) not in fichier.read_text(encoding="utf-8"), fichier

faire(CMAKE, "-G", "Ninja", "-S", EXEMPLE, "-B", f"{DOSSIER}/cmake", f"-DCMAKE_CXX_COMPILER={COMPILATEUR}",
      f"-DCMAKE_PREFIX_PATH={PREFIXE}")
faire(CMAKE, "--build", f"{DOSSIER}/cmake")
dit = faire(f"{DOSSIER}/cmake/exemple")
assert dit == ATTENDU, dit

pc = next(PREFIXE.rglob("tarnavellekit.pc"))
trouve = {"PKG_CONFIG_PATH": str(pc.parent)}
version = faire("pkg-config", "--modversion", "tarnavellekit", **trouve).strip()
for lien in ([], ["-static"]) if sys.platform == "linux" else ([],):
    drapeaux = shlex.split(faire("pkg-config", "--cflags", "--libs", *("-" + mot for mot in lien), "tarnavellekit", **trouve))
    faire(COMPILATEUR, "-std=c++20", f'-DVERSION_TROUVEE="{version}"', EXEMPLE / "exemple.cpp",
          "-o", f"{DOSSIER}/exemple", *lien, *drapeaux)
    dit = faire(f"{DOSSIER}/exemple")
    assert dit == ATTENDU, dit
