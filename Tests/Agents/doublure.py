#!/usr/bin/env python3
"""Stands in for an agent's program: doublure.py WORD...

Notes its words as one JSON line in $HOME/lancements. Without --settings, that is all. With it, plays
each $HOME/jeu/N.json, N from 1 on, as soon as it is there, and answers with $HOME/jeu/N.fait; a scene
that has its answer is not played again. A scene is {"maniere": …, "evenements": […]}, its events being
the very texts that claude writes to its hooks, which are those of the settings file. The manners:
    "enchaine"   one hook after the other
    "entrelace"  all hooks alive at once, fed one after the other
    "ensemble"   all hooks alive and fed at once
"""
import json
import os
import pathlib
import subprocess
import sys
import threading
import time


def lancer(reglages, evenement):
    (entree,) = reglages["hooks"][json.loads(evenement)["hook_event_name"]]
    (commande,) = entree["hooks"]
    if commande["type"] != "command" or commande["timeout"] != 5 or "matcher" in entree:
        raise ValueError(entree)
    return subprocess.Popen(["/bin/sh", "-c", commande["command"]], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                            stderr=subprocess.STDOUT)


def nourrir(hook, evenement, ennuis):
    bavardage, _ = hook.communicate(evenement.encode())
    if bavardage or hook.returncode:
        ennuis.append(f"{hook.returncode} {bavardage!r}")


def jouer(reglages, maniere, evenements):
    ennuis = []
    if maniere == "enchaine":
        for evenement in evenements:
            nourrir(lancer(reglages, evenement), evenement, ennuis)
        return ennuis
    hooks = [lancer(reglages, evenement) for evenement in evenements]
    fils = [threading.Thread(target=nourrir, args=(h, e, ennuis)) for h, e in zip(hooks, evenements)]
    for fil in fils:
        fil.start()
        if maniere == "entrelace":
            fil.join()
    for fil in fils:
        fil.join()
    return ennuis


def main():
    maison = pathlib.Path(os.environ["HOME"])
    with open(maison / "lancements", "a", encoding="utf-8") as lancements:
        lancements.write(json.dumps(sys.argv[1:], ensure_ascii=False) + "\n")
    reglages = None
    if "--settings" in sys.argv:
        chemin = sys.argv[sys.argv.index("--settings") + 1]
        reglages = json.loads(pathlib.Path(chemin).read_text(encoding="utf-8"))
    numero = 1
    while maison.is_dir():
        scene = maison / "jeu" / f"{numero}.json"
        reponse = scene.with_suffix(".fait")
        if reponse.exists():
            numero += 1
        elif reglages and scene.exists():
            ennuis = jouer(reglages, **json.loads(scene.read_text(encoding="utf-8")))
            reponse.write_text("\n".join(ennuis), encoding="utf-8")
        else:
            time.sleep(0.01)


if __name__ == "__main__":
    main()
