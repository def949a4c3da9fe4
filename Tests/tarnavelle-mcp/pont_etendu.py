#!/usr/bin/env python3
"""The real bridge speaking today's protocol, and a door that answers when it is told to: pont_etendu.py BRIDGE"""
import contextlib
import http.server
import json
import os
import queue
import select
import subprocess
import sys
import threading
import time

PONT = os.path.abspath(sys.argv[1])
ATTENTE = {"agent": "Merlin", "timeout_s": "200"}


class Appel(http.server.BaseHTTPRequestHandler):
    """One call: told to the test, answered by it, or left by the bridge."""
    protocol_version = "HTTP/1.1"
    texte = b'{"ok":true}'

    def do_POST(self):
        self.corps = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        self.reponse = threading.Event()
        self.server.appels.put(self)
        self.reponse.wait(60)
        self.send_response(200)
        self.send_header("Content-Length", str(len(self.texte)))
        self.end_headers()
        self.wfile.write(self.texte)

    def laisse(self):
        """Whether the bridge closes the connection."""
        self.connection.settimeout(5)
        return self.connection.recv(1) == b""

    def log_message(self, *_):
        pass


class Porte(http.server.ThreadingHTTPServer):
    request_queue_size = 200
    daemon_threads = True

    def __init__(self):
        super().__init__(("127.0.0.1", 0), Appel)
        self.appels = queue.Queue()
        threading.Thread(target=self.serve_forever, daemon=True).start()

    def handle_error(self, *_):  # a reply to a call that was left
        pass

    def appel(self, action):
        recu = self.appels.get(timeout=5)
        assert recu.corps["action"] == action, (recu.corps, action)
        return recu


class Pont:
    def __init__(self, porte):
        self.enfant = subprocess.Popen([PONT], stdin=subprocess.PIPE, stdout=subprocess.PIPE, bufsize=0, env={
            "HOME": "/nulle/part", "TARNAVELLE_CONTROL_URL": f"http://127.0.0.1:{porte.server_port}",
            "TARNAVELLE_MCP_ETENDU": "1"})

    def dire(self, methode, id=None, **params):
        message = {"jsonrpc": "2.0", "method": methode, "params": params} | ({} if id is None else {"id": id})
        self.enfant.stdin.write(json.dumps(message).encode() + b"\n")

    def appeler(self, id, verbe, jeton=None, **arguments):
        meta = {} if jeton is None else {"_meta": {"progressToken": jeton}}
        self.dire("tools/call", id, name="trv_" + verbe, arguments=arguments, **meta)

    def entendre(self, *ids):
        recus = [json.loads(self.enfant.stdout.readline()) for _ in ids]
        assert [r.get("id") for r in recus] == list(ids), (recus, ids)
        return recus

    def poids(self):
        """Threads, and memory in MiB; nothing where the platform does not tell."""
        statut = f"/proc/{self.enfant.pid}/status"
        etat = dict(l.split(":", 1) for l in open(statut)) if os.path.exists(statut) else {}
        return int(etat.get("Threads", 0)), int(etat.get("VmHWM", "0").split()[0]) / 1024

    def finir(self, *ids):
        self.enfant.stdin.close()
        self.entendre(*ids)
        assert self.enfant.stdout.read() == b"" and self.enfant.wait(5) == 0


def cote_a_cote(porte):
    """Reads pass a wait and what types; what types keeps its order, and its turn when it is cancelled."""
    pont = Pont(porte)
    pont.appeler("attente", "attendre", **ATTENTE)
    attente = porte.appel("attendre")
    assert attente.headers["X-Tarnavelle-Patience"] == "210", attente.headers
    for id in ("g1", "g2", "g3", "g4"):
        pont.appeler(id, "dicter", texte=id)
    premier = porte.appel("dicter")
    pont.appeler("lu", "etat")
    porte.appel("etat").reponse.set()
    pont.entendre("lu")
    pont.dire("ping", "p")
    pont.entendre("p")
    for id in ("g1", "g3", "inconnu", None, 7, ["g4"]):
        pont.dire("notifications/cancelled", requestId=id)
    pont.dire("ping", "p")
    pont.entendre("p")
    premier.reponse.set()  # carried to its end, unanswered
    for id in ("g2", "g4"):
        geste = porte.appel("dicter")
        assert geste.corps["texte"] == id, geste.corps
        geste.reponse.set()
        pont.entendre(id)
    pont.dire("notifications/cancelled", requestId="attente")
    assert attente.laisse(), "the door was not told that nobody waits"
    pont.finir()


def a_la_fin(porte):
    """At the end of input what types is answered; a wait ends, told to both sides. Ids may be used twice."""
    pont = Pont(porte)
    pont.appeler("attente", "attendre", **ATTENTE)
    attente = porte.appel("attendre")
    for texte in "ab":
        pont.appeler(1, "dicter", texte=texte)
    premier = porte.appel("dicter")
    pont.enfant.stdin.close()
    refus, = pont.entendre("attente")
    assert refus["result"]["isError"] and "Plus personne" in refus["result"]["content"][0]["text"], refus
    assert attente.laisse()
    premier.reponse.set()
    porte.appel("dicter").reponse.set()
    pont.finir(1, 1)


def reponse_en_route(porte):
    """The reply that is being written when the input ends is written whole, however slowly it is read."""
    pont = Pont(porte)
    for verbe in ("attendre", "etat"):
        pont.appeler(verbe, verbe, **ATTENTE)
    appels = {a.corps["action"]: a for a in (porte.appels.get(timeout=5) for _ in "ab")}
    appels["etat"].reponse.set()
    pont.entendre("etat")
    appels["attendre"].texte = b'{"ok":true,"data":"%s"}' % (b"x" * 300_000)
    appels["attendre"].reponse.set()
    assert select.select([pont.enfant.stdout], [], [], 5)[0]
    pont.enfant.stdin.close()
    with contextlib.suppress(subprocess.TimeoutExpired):
        pont.enfant.wait(0.2)
    pont.finir("attendre")


def nombreux(porte):
    """A hundred waits cost no thread each, and little memory; one more read is still answered."""
    pont = Pont(porte)
    pont.dire("ping", "p")
    pont.entendre("p")
    _, avant = pont.poids()
    for n in range(110):
        pont.appeler(n, "attendre", agent=str(n), timeout_s=200)
    attentes = {a.corps["agent"]: a for a in (porte.appel("attendre") for _ in range(100))}
    pont.appeler("lu", "etat")
    porte.appel("etat").reponse.set()
    pont.entendre("lu")
    fils, apres = pont.poids()
    # A sanitizer has threads and memory of its own.
    assert fils <= 4 and (apres <= 8 or avant > 8), (fils, avant, apres)
    print(f"pont_etendu : 100 attentes, {fils} fils, {avant:.1f} Mio puis {apres:.1f}")
    pont.dire("notifications/cancelled", requestId=99)
    assert attentes["99"].laisse()
    assert porte.appel("attendre").corps["agent"] == "100", "not the next in line"
    pont.dire("notifications/cancelled", requestId=105)
    pont.finir(*[n for n in range(110) if n not in (99, 105)])


def progression(porte):
    """Tokens of the protocol's types are told how long, until the reply and no more."""
    pont = Pont(porte)
    jetons = {"a": "j", "b": 7, "c": None, "d": True, "e": [1], "f": {}}
    for id, jeton in jetons.items():
        pont.appeler(id, "attendre", jeton, **ATTENTE)
    attentes = [porte.appel("attendre") for _ in jetons]
    dits = [r["params"] for r in pont.entendre(None, None)]
    assert sorted(str(d["progressToken"]) for d in dits) == ["7", "j"], dits
    assert all(d["total"] == 200 and d["progress"] >= 1 and d["message"] for d in dits), dits
    for attente in attentes:
        attente.reponse.set()
    recus = [json.loads(pont.enfant.stdout.readline())["id"] for _ in jetons]
    assert sorted(recus) == sorted(jetons), recus
    pont.finir()


def main():
    debut = time.monotonic()
    for epreuve in (cote_a_cote, a_la_fin, reponse_en_route, nombreux, progression):
        epreuve(Porte())
    print(f"pont_etendu : tout va bien, en {time.monotonic() - debut:.1f} s")


main()
