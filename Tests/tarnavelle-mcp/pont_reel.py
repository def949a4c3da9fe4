#!/usr/bin/env python3
"""The real bridge, its pipes and a door behind TLS: pont_reel.py BRIDGE

A throw-away authority signs one certificate for localhost and one for another host. The bridge must
speak to the first, and to nobody whose certificate names another host or comes from an authority that
the system's store does not hold.
"""
import http.server
import json
import os
import pathlib
import ssl
import subprocess
import sys
import tempfile
import threading
import time

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from autorite import fabriquer

PONT = os.path.abspath(sys.argv[1])
REFUS = '{"error":"La porte n\'a pas répondu (HTTP -1).","ok":false}'
APPEL = b'{"id":1,"method":"tools/call","params":{"name":"trv_etat"}}\n'
PING, PONG = b'{"id":2,"method":"ping"}\n', b'{"id":2,"jsonrpc":"2.0","result":{}}\n'


class Porte(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_POST(self):
        corps = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        self.server.appelee.set()
        reponse = json.dumps({"ok": self.headers["Authorization"] == "Bearer secret", "action": corps["action"],
                              "port": self.client_address[1], "data": "d" * self.server.octets}).encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(reponse)))
        self.end_headers()
        self.wfile.write(reponse)

    def log_message(self, *_):
        pass


def ouvrir(certificat=None, octets=0):
    serveur = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Porte)
    serveur.appelee, serveur.octets = threading.Event(), octets
    if certificat:
        contexte = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        contexte.load_cert_chain(f"{certificat}.pem", f"{certificat}.key")
        serveur.socket = contexte.wrap_socket(serveur.socket, server_side=True)
        serveur.handle_error = lambda *_: None  # a refused certificate ends the handshake
    threading.Thread(target=serveur.serve_forever, daemon=True).start()
    return serveur


def monde(porte, schema="http", autorite="/nulle/part"):
    return {"TARNAVELLE_CONTROL_URL": f"{schema}://localhost:{porte.server_port}", "HOME": "/nulle/part",
            "TARNAVELLE_CONTROL_TOKEN": "secret", "SSL_CERT_FILE": str(autorite)}


def appeler(porte, autorite, fois=1):
    sortie = subprocess.run([PONT], input=APPEL * fois, capture_output=True, timeout=60,
                            env=monde(porte, "https", autorite))
    assert sortie.returncode == 0 and not sortie.stderr, sortie
    return [json.loads(l)["result"]["content"][0]["text"] for l in sortie.stdout.splitlines()]


def par_tls(dossier):
    fabriquer(dossier)
    bonne, autre = ouvrir(dossier / "localhost"), ouvrir(dossier / "ailleurs.example")
    reponses = [json.loads(t) for t in appeler(bonne, dossier / "ca.pem", fois=3)]
    assert all(r["ok"] and r["action"] == "etat" for r in reponses), reponses
    assert len({r["port"] for r in reponses}) == 1, f"the connection was not kept: {reponses}"
    assert appeler(autre, dossier / "ca.pem") == [REFUS], "a certificate of another host was accepted"
    assert appeler(bonne, dossier / "absente.pem") == [REFUS], "an unknown authority was accepted"


def lancer(porte, bloquant=True):
    """The bridge, where to write to it and where to read from it; its own ends may be unable to block."""
    (entree, vers), (de, sortie) = os.pipe(), os.pipe()
    for bout in (entree, sortie):
        os.set_blocking(bout, bloquant)
    enfant = subprocess.Popen([PONT], stdin=entree, stdout=sortie, env=monde(porte))
    os.close(entree)
    os.close(sortie)
    return enfant, open(vers, "wb", buffering=0), open(de, "rb")


def par_un_tube_plein():
    porte = ouvrir(octets=3 << 20)
    for bloquant in (True, False):
        enfant, vers, de = lancer(porte, bloquant)
        vers.write(APPEL + PING)
        time.sleep(0.05)  # the pipe is full, the bridge waits in its write
        recu = json.loads(json.loads(de.readline())["result"]["content"][0]["text"])
        assert recu["data"] == "d" * (3 << 20), len(recu["data"])
        assert de.readline() == PONG
        vers.close()
        assert enfant.wait(5) == 0


def sortie_fermee():
    """A client that no longer listens does not end the service."""
    porte = ouvrir()
    enfant, vers, de = lancer(porte)
    de.close()
    vers.write(PING + APPEL)
    assert porte.appelee.wait(5), "the door was not called"
    vers.close()
    assert enfant.wait(5) == 0


def main():
    with tempfile.TemporaryDirectory() as nom:
        par_tls(pathlib.Path(nom))
    par_un_tube_plein()
    sortie_fermee()
    print("pont_reel : tout va bien")


main()
