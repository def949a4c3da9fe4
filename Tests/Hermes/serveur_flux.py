#!/usr/bin/env python3
"""Streams of events, in chunks of one byte: the path /SCENARIO/N/... chooses what happens.

Each connection to one path plays the scenario's next act, and the last one again from then on. Prints one
line of JSON that tells where the servers listen. Ends with SIGTERM, or after ten minutes.
"""
import collections
import http.server
import json
import os
import pathlib
import signal
import ssl
import sys
import tempfile
import threading

sys.path.insert(0, str(pathlib.Path(__file__).parents[1]))
from autorite import fabriquer


TOPIC = '"topic":"abcdefghijklmnopqrst-_"'
OUVRE = f'data: {{"event":"open",{TOPIC}}}\n\n: rien\nevent: keepalive\ndata: {{"event":"keepalive",{TOPIC}}}\n\n'
A, B, C = (f'data: {{"event":"message","id":"{x}","message":"{x} é",{TOPIC}}}\n\n' for x in "ABC")
TEXTE = 'data: {"choices":[{"delta":{"content":"é"}}]}\n\n'
OUTIL = 'data: {"type":"tool.start","name":"lire","input":{"path":"/p"}}\n\n'

# In an act: the status, then events; None is an end without farewell, ... silence until the client leaves.
SCENARIOS = {
    "coupe": [[200, OUVRE, A, B[:60], None], [200, OUVRE, A, A, B, C], [200, B, C], [403]],
    "tour": [[200, TEXTE, OUTIL, "data: [DONE]\n\n", TEXTE]],
    "ouverte": [[200, OUVRE, ...]],
}
actes = collections.Counter()


class Serveur(http.server.ThreadingHTTPServer):
    request_queue_size = 1000
    handle_error = lambda *_: None  # refused handshakes and abrupt ends are what this is about


class Reponse(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    disable_nagle_algorithm = True

    def do_GET(self):
        self.close_connection = True
        self.rfile.read(int(self.headers["Content-Length"]))
        chemin = self.path.split("?")[0]
        scenario = SCENARIOS[chemin.split("/")[1]]
        statut, *evenements = scenario[min(actes[chemin], len(scenario) - 1)]
        actes[chemin] += 1
        self.send_response(statut)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()
        for x in evenements:
            if x is None:
                return
            if x is ...:
                self.rfile.read()
                return
            for octet in x.encode():
                self.wfile.write(b"1\r\n%c\r\n" % octet)
        self.wfile.write(b"0\r\n\r\n")

    do_POST = do_GET
    log_message = lambda *_: None


signal.pthread_sigmask(signal.SIG_BLOCK, [signal.SIGTERM])
with tempfile.TemporaryDirectory() as nom:
    dossier = pathlib.Path(nom)
    fabriquer(dossier)
    serveurs = {nom: Serveur(("127.0.0.1", 0), Reponse) for nom in ("clair", "localhost", "ailleurs.example")}
    for nom, serveur in serveurs.items():
        if nom != "clair":
            contexte = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
            contexte.load_cert_chain(dossier / f"{nom}.pem", dossier / f"{nom}.key")
            serveur.socket = contexte.wrap_socket(serveur.socket, server_side=True, do_handshake_on_connect=False)
        threading.Thread(target=serveur.serve_forever, daemon=True).start()
    print(json.dumps({"pid": os.getpid(), "autorite": str(dossier / "ca.pem"),
                      "ports": {nom: serveur.server_port for nom, serveur in serveurs.items()}}), flush=True)
    signal.sigtimedwait([signal.SIGTERM], 600)
