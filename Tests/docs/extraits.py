#!/usr/bin/env python3
"""The pieces of the documentation that can go stale: extraits.py cpp FOLDER FILE…, or recettes SOURCES FILE…

"cpp" writes each C++ block into a source file of its own, FOLDER/<document>_<n>.cpp, and prints their names;
"recettes" checks that each diff still applies to the sources.
"""
import pathlib
import re
import subprocess
import sys

ACTION, OU, *DOCUMENTS = sys.argv[1:]


def blocs(langue):
    for document in map(pathlib.Path, DOCUMENTS):
        texte = document.read_text(encoding="utf-8")
        for n, bloc in enumerate(re.findall(rf"^```{langue}\n(.*?)^```$", texte, re.DOTALL | re.MULTILINE)):
            yield f"{document.stem}_{n}", bloc


if ACTION == "cpp":
    for nom, bloc in blocs("cpp"):
        # Blocks may define the same names: each has a namespace of its own, below its includes.
        tete, corps = re.match(r"((?:#include [^\n]*\n|\n)*)(.*)", bloc, re.DOTALL).groups()
        fichier = pathlib.Path(OU) / f"{nom}.cpp"
        texte = f"{tete}namespace {nom} {{\n{corps}}}\n"
        if not fichier.exists() or fichier.read_text(encoding="utf-8") != texte:
            fichier.parent.mkdir(parents=True, exist_ok=True)
            fichier.write_text(texte, encoding="utf-8")
        print(fichier)
else:
    recettes = list(blocs("diff"))
    assert recettes
    for nom, bloc in recettes:
        fait = subprocess.run(["git", "apply", "--check"], cwd=OU, input=bloc, capture_output=True, encoding="utf-8")
        assert fait.returncode == 0, f"{nom} : {fait.stderr}"
    print(f"{len(recettes)} recettes s'appliquent")
