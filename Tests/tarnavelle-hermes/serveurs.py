"""Foreign servers that behave as they are told, badly above all: an ntfy server and Hermès's gateway."""
import http.server
import json
import queue
import select
import socket
import threading
import time

TOPIC = "canal-d-essai-de-hermes-22"


class Serveur(http.server.ThreadingHTTPServer):
    daemon_threads = True
    request_queue_size = 64

    def __init__(self, poignee, port=0):
        self.allow_reuse_address = True
        super().__init__(("127.0.0.1", port), poignee)
        self.liens, self.verrou = set(), threading.Lock()
        threading.Thread(target=self.serve_forever, kwargs={"poll_interval": 0.02}, daemon=True).start()

    @property
    def url(self):
        return f"http://127.0.0.1:{self.server_port}"

    def process_request(self, lien, adresse):
        with self.verrou:
            self.liens.add(lien)
        super().process_request(lien, adresse)

    def shutdown_request(self, lien):
        with self.verrou:
            self.liens.discard(lien)
        super().shutdown_request(lien)

    def couper(self):
        """Every connection breaks."""
        with self.verrou:
            liens = list(self.liens)
        for lien in liens:
            try:
                lien.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    def fermer(self):
        self.shutdown()
        self.couper()
        self.server_close()

    def handle_error(self, *_):
        """A client that hangs up has that right."""


class Poignee(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def commencer(self, statut=200, genre="text/event-stream"):
        self.send_response(statut)
        self.send_header("Content-Type", genre)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()

    def morceau(self, octets):
        octets = octets if isinstance(octets, bytes) else octets.encode()
        self.wfile.write(b"%x\r\n%s\r\n" % (len(octets), octets))
        self.wfile.flush()

    def repondre(self, statut, objet=None):
        corps = json.dumps(objet or {}).encode()
        self.send_response(statut)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(corps)))
        self.end_headers()
        self.wfile.write(corps)


def evenement(objet):
    return f"data: {json.dumps(objet)}\n\n"


class Ntfy(Serveur):
    """Keeps what is published, catches up by whole seconds, and sends live what comes: as an ntfy server does."""

    def __init__(self, port=0):
        self.publies, self.abonnes, self.abonnements = [], [], []
        self.statut, self.garbage, self.parole = 200, None, threading.Condition()
        super().__init__(AbonneNtfy, port)

    def publier(self, texte, titre=None, topic=TOPIC, ident=None):
        with self.parole:
            avis = {"id": ident or f"n{len(self.publies):07d}", "time": int(time.time()), "event": "message",
                    "topic": topic, "message": texte}
            if titre:
                avis["title"] = titre
            self.publies.append(avis)
            for file in self.abonnes:
                file.put(avis)
        return avis["id"]

    def dire(self, texte):
        """Something that is no notice, to whoever listens."""
        with self.parole:
            for file in self.abonnes:
                file.put(texte)


class AbonneNtfy(Poignee):
    def do_GET(self):
        serveur = self.server
        serveur.abonnements.append((self.path, self.headers.get("Authorization")))
        if serveur.statut != 200:
            return self.repondre(serveur.statut, {"http": serveur.statut})
        file = queue.Queue()
        depuis = self.path.partition("since=")[2]
        with serveur.parole:  # what is published from here on comes live
            gardes = list(serveur.publies) if depuis else []
            serveur.abonnes.append(file)
        unite = {"s": 1, "m": 60}.get(depuis[-1:], 1)
        bord = time.time() - int(depuis[:-1] or 0) * unite if depuis else 0
        try:
            self.commencer()
            entete = {"id": "o", "time": int(time.time()), "topic": TOPIC}
            self.morceau("event: open\n" + evenement({**entete, "event": "open"}))
            for avis in gardes:
                if avis["time"] >= int(bord):
                    self.morceau(evenement(avis))
            while True:
                try:
                    suite = file.get(timeout=0.5)
                except queue.Empty:
                    suite = "event: keepalive\n" + evenement({**entete, "time": int(time.time()), "event": "keepalive"})
                self.morceau(suite if isinstance(suite, (str, bytes)) else evenement(suite))
        except OSError:
            pass
        finally:
            with serveur.parole:
                serveur.abonnes.remove(file)


class Passerelle(Serveur):
    """Hermès's gateway. What a message begins with decides of the answer: see `repondre_a`. `recus`: the messages, in
    their order, with the headers of each; `verdicts`: the answers to its requests."""

    def __init__(self, port=0, cle="clef-de-la-passerelle"):
        self.recus, self.verdicts, self.cle = [], [], cle
        self.sessions, self.oubliees = {"s1"}, set()
        self.route = "approvals/respond"
        self.accords, self.lacher = {}, threading.Event()
        super().__init__(Appel, port)

    def textes(self):
        return [recu["texte"] for recu in self.recus]


class Appel(Poignee):
    def do_GET(self):
        self.repondre(200 if self.path.endswith("/health") else 404, {"status": "ok"})

    def do_POST(self):
        serveur = self.server
        corps = json.loads(self.rfile.read(int(self.headers["Content-Length"])))
        if self.headers.get("Authorization") != f"Bearer {serveur.cle}":
            return self.repondre(401, {"error": "key"})
        if not self.path.endswith("/chat/completions"):
            serveur.verdicts.append((self.path, corps))
            if not self.path.endswith("/v1/" + serveur.route):
                return self.repondre(404)
            self.repondre(200)
            attente = serveur.accords.get(corps["approval_id"])
            if attente:
                attente.put(corps["approved"])
            return
        texte = corps["messages"][0]["content"]
        session = self.headers.get("X-Hermes-Session-Id")
        recu = {"texte": texte, "session": session, "modele": corps["model"], "quand": time.time()}
        serveur.recus.append(recu)
        if session in serveur.oubliees:
            return self.repondre(404, {"error": "no such session"})
        try:
            self.repondre_a(texte)
        except OSError:
            recu["parti"] = True

    def dire(self, texte):
        self.morceau(evenement({"choices": [{"index": 0, "delta": {"content": texte}}]}))

    def outil(self, nom="terminal", **arguments):
        self.morceau(evenement({"type": "tool.start", "name": nom, "input": arguments}))

    def couper(self):
        self.close_connection = True
        self.connection.shutdown(socket.SHUT_RDWR)

    def repondre_a(self, texte):
        mots = texte.split()
        quoi = mots[0] if mots else ""
        if quoi == "statut":
            return self.repondre(int(mots[1]))
        if quoi == "coupe-avant":
            return self.couper()
        self.commencer()
        self.morceau(": keep-alive\r\n")
        if quoi != "sans-session":
            self.morceau(evenement({"type": "session", "session_id": "s1"}))
        if quoi == "ordures":
            self.morceau(b"data: {\xff\xfe\ndata: [1,2]\n\n\0\0<html>\n" + b"x" * 100 + b"\n")
        if quoi == "hostile":
            self.dire("\x1b]0;pris\x07\x1b[2Jfin\u202e\x9b31m")
        if quoi == "texte-coupe":
            self.dire("Je commence ")
            return self.couper()
        if quoi == "outil-coupe":
            self.outil(file_path="/tmp/essai")
            return self.couper()
        if quoi == "erreur":
            self.morceau(evenement({"error": {"message": "plus de crédit", "code": 402}}))
            if mots[1:] == ["seule"]:
                return self.morceau("data: [DONE]\n\n")
        if quoi == "silence":
            self.dire("Je cherche ")
            if select.select([self.connection], [], [], float(mots[1]))[0]:
                raise OSError("the other end is gone")
        if quoi == "retiens":
            self.server.lacher.wait(60)
        if "accord" in mots[:3:2]:
            ident = mots[mots.index("accord") + 1]
            attente = self.server.accords[ident] = queue.Queue()
            self.morceau(evenement({"type": "approval.request", "approval_id": ident, "tool": "terminal",
                                    "title": "Effacer le dossier", "command": "rm -rf essai"}))
            donne = attente.get(timeout=60)
            self.morceau(evenement({"type": "approval.responded", "approval_id": ident, "approved": donne}))
            self.dire("C'est effacé." if donne else "Je n'efface rien.")
        if quoi == "outil":
            self.outil(file_path="/tmp/essai")
            self.morceau(evenement({"type": "tool.end", "name": "terminal"}))
        if quoi == "long":
            for n in range(int(mots[1])):
                self.dire(f"ligne {n}\n")
        for morceau in ("Bien ", "reçu : ", texte[:60].replace("\n", " ")):
            self.dire(morceau)
        self.morceau("data: [DONE]\n\n")
        self.morceau(b"")
