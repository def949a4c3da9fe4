#!/usr/bin/env python3
"""What outils/installer says where it installs nothing: installer.py SCRIPT COMPILER

It reads a table of the test's own and sees only the commands put before it: no apt, and a Homebrew or none.
"""
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile

SCRIPT, COMPILATEUR = map(os.path.abspath, sys.argv[1:])
TABLE = """# groupe temoin debian12 debian13 homebrew
un bash    a    =   =
un absente p12  p13 =
un <la.h>  l    =   lie
un <tu.h>  t    =   clef
un <pas.h> x12  x13 z
un aussi   w    =   z
un -       deb  =   -
deux loin  v    =   =
"""
RELANCE = "Il manque des paquets. À taper, avant de relancer la commande :\n  brew install "
CAS = (
    ("Darwin", True, "un", RELANCE + "p13 z\n"),
    ("Linux", True, "", RELANCE + "p13 z v\n"),
    ("Darwin", False, "deux un", "Homebrew (brew) n'est pas installé : c'est lui qui a ce qui manque.\n" + RELANCE
     + "p13 lie clef z v\n"),
    ("Linux", False, "deux", """\
Il manque, pour aller plus loin (commande ou en-tête cherché, puis nom du paquet Debian 13) :
  loin (v)
Il n'y a ici ni apt ni Homebrew (brew) : installez-les comme ce système le veut, puis relancez la commande.
"""),
)


def commande(chemin, texte):
    chemin.write_text(f"#!/bin/sh\n{texte}\n")
    chemin.chmod(0o755)


for noyau, brew, groupes, attendu in CAS:
    with tempfile.TemporaryDirectory(prefix="un dossier ") as nom:
        dossier = pathlib.Path(nom)
        for ou in ("bin", "brew/include", "brew/opt/clef/include"):
            (dossier / ou).mkdir(parents=True)
        for outil in ("bash", "dirname"):
            (dossier / "bin" / outil).symlink_to(shutil.which(outil))
        (dossier / "brew/include/la.h").touch()
        (dossier / "brew/opt/clef/include/tu.h").touch()
        commande(dossier / "bin/uname", f"echo {noyau}")
        if brew:
            commande(dossier / "bin/brew", f"echo '{dossier}/brew'")
        (dossier / "paquets.txt").write_text(TABLE)
        shutil.copy(SCRIPT, dossier)
        fait = subprocess.run([dossier / "installer", *groupes.split()], capture_output=True, encoding="utf-8",
                              env={"PATH": str(dossier / "bin"), "CXX": COMPILATEUR})
        obtenu = (fait.returncode, fait.stdout, fait.stderr)
        assert obtenu == (1, "", attendu), f"{noyau}, brew {brew}, {groupes} : {obtenu}"
