#!/usr/bin/env python3
"""The bridge and a door behind TLS: porte_https.py BRIDGE

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

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from autorite import fabriquer

REFUS = '{"error":"La porte n\'a pas répondu (HTTP -1).","ok":false}'


class Porte(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def do_POST(self):
        corps = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        reponse = json.dumps({"ok": self.headers["Authorization"] == "Bearer secret", "action": corps["action"],
                              "port": self.client_address[1]}).encode()
        self.send_response(200)
        self.send_header("Content-Length", str(len(reponse)))
        self.end_headers()
        self.wfile.write(reponse)

    def log_message(self, *_):
        pass


def ouvrir(dossier, nom):
    contexte = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    contexte.load_cert_chain(dossier / f"{nom}.pem", dossier / f"{nom}.key")
    serveur = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Porte)
    serveur.socket = contexte.wrap_socket(serveur.socket, server_side=True)
    serveur.handle_error = lambda *_: None  # a refused certificate ends the handshake
    threading.Thread(target=serveur.serve_forever, daemon=True).start()
    return serveur.server_address[1]


def appeler(pont, port, autorite, fois=1):
    ligne = json.dumps({"id": 1, "method": "tools/call", "params": {"name": "trv_etat"}}) + "\n"
    env = {"TARNAVELLE_CONTROL_URL": f"https://localhost:{port}", "TARNAVELLE_CONTROL_TOKEN": "secret",
           "HOME": "/nulle/part", "SSL_CERT_FILE": str(autorite)}
    sortie = subprocess.run([pont], input=(ligne * fois).encode(), capture_output=True, env=env, timeout=60)
    assert sortie.returncode == 0 and not sortie.stderr, sortie
    return [json.loads(l)["result"]["content"][0]["text"] for l in sortie.stdout.splitlines()]


def main():
    pont = os.path.abspath(sys.argv[1])
    with tempfile.TemporaryDirectory() as nom:
        dossier = pathlib.Path(nom)
        fabriquer(dossier)
        bonne, autre = ouvrir(dossier, "localhost"), ouvrir(dossier, "ailleurs.example")

        reponses = [json.loads(t) for t in appeler(pont, bonne, dossier / "ca.pem", fois=3)]
        assert all(r["ok"] and r["action"] == "etat" for r in reponses), reponses
        assert len({r["port"] for r in reponses}) == 1, f"the connection was not kept: {reponses}"
        assert appeler(pont, autre, dossier / "ca.pem") == [REFUS], "a certificate of another host was accepted"
        assert appeler(pont, bonne, dossier / "absente.pem") == [REFUS], "an unknown authority was accepted"
    print("porte_https : 3 cas bons")


main()
