"""A realtime voice service of another library than the program's, which hears speech by its strength and plays the
part that the model's name asks for, in the order and shape of the events of real ones."""
import array
import asyncio
import base64
import http
import json
import math
import threading
import time
import urllib.parse

from websockets.exceptions import ConnectionClosed
from websockets.legacy.server import serve

FREQUENCE = 24000


def pcm(secondes, hertz=440, force=8000):
    return array.array("h", (int(force * math.sin(2 * math.pi * hertz * i / FREQUENCE))
                             for i in range(int(secondes * FREQUENCE)))).tobytes()


def force(octets):
    sons = array.array("h", octets[:len(octets) // 2 * 2])
    return max(map(abs, sons), default=0)


class Service:
    """`roles` maps a model to a coroutine of a session; what is received is kept, each with when it came."""

    def __init__(self, roles, statut=None):
        self.roles, self.statut, self.sessions, self.cles = roles, statut, [], []
        pret = threading.Event()
        self.boucle = asyncio.new_event_loop()
        threading.Thread(target=self._servir, args=(pret,), daemon=True).start()
        assert pret.wait(10)
        self.url = f"ws://127.0.0.1:{self.port}/v1/realtime"

    def _servir(self, pret):
        asyncio.set_event_loop(self.boucle)

        async def ouvrir():
            serveur = await serve(self._mener, "127.0.0.1", 0, process_request=self._accueillir, max_size=None)
            self.port = serveur.sockets[0].getsockname()[1]
            pret.set()

        self.boucle.run_until_complete(ouvrir())
        self.boucle.run_forever()

    async def _accueillir(self, _, entetes):
        self.cles.append(entetes.get("Authorization"))
        if self.statut:
            return http.HTTPStatus(self.statut[0]), [], json.dumps(self.statut[1]).encode()

    async def _mener(self, ws, chemin):
        modele = urllib.parse.parse_qs(urllib.parse.urlsplit(chemin).query)["model"][0]
        session = Session(ws, "xai" if modele.startswith("xai") else "openai")
        self.sessions.append(session)
        lecture = asyncio.ensure_future(session.lire())
        try:
            await self.roles[modele](session)
            await ws.wait_closed()
        except (ConnectionClosed, asyncio.CancelledError):
            pass
        finally:
            lecture.cancel()

    def recus(self, genre):
        return [e for s in self.sessions for _, e in s.recus if e["type"] == genre]


class Session:
    def __init__(self, ws, dialecte):
        self.ws, self.dialecte, self.recus, self.dits = ws, dialecte, [], []
        self.file, self.sons, self.numero = asyncio.Queue(), asyncio.Queue(), 0

    async def lire(self):
        try:
            async for message in self.ws:
                evenement = json.loads(message)
                quand = time.monotonic()
                if evenement["type"] == "input_audio_buffer.append":
                    octets = base64.b64decode(evenement["audio"])
                    self.sons.put_nowait((quand, octets))
                    evenement = {"type": evenement["type"], "octets": octets}
                else:
                    self.file.put_nowait(evenement)
                self.recus.append((quand, evenement))
        except ConnectionClosed:
            pass

    async def dire(self, genre, **reste):
        self.numero += 1
        self.dits.append((time.monotonic(), genre))
        await self.ws.send(json.dumps({"type": genre, "event_id": f"event_{self.numero}", **reste}))

    async def attendre(self, genre, delai=20):
        async def chercher():
            while (evenement := await self.file.get())["type"] != genre:
                pass
            return evenement
        return await asyncio.wait_for(chercher(), delai)

    async def ouvrir(self):
        await self.dire("session.created", session={"type": "realtime", "id": "sess_1", "model": "m"})
        self.configuration = (await self.attendre("session.update"))["session"]
        await self.dire("session.updated", session={"type": "realtime", "id": "sess_1"})

    async def entendre(self, texte, silence=0.3):
        """Waits until somebody has spoken and is quiet again; tells it as servers do."""
        debut = calme = None
        while debut is None or calme is None or calme < silence:
            quand, octets = await asyncio.wait_for(self.sons.get(), 20)
            if force(octets) > 1500:
                if debut is None:
                    debut = quand
                    await self.dire("input_audio_buffer.speech_started", audio_start_ms=0, item_id="item_o")
                calme = 0
            elif calme is not None:
                calme += len(octets) / 2 / FREQUENCE
        await self.dire("input_audio_buffer.speech_stopped", audio_end_ms=1, item_id="item_o")
        await self.dire("input_audio_buffer.committed", item_id="item_o")
        await self.dire("conversation.item.added", item={"id": "item_o", "type": "message", "role": "user"})
        await self.dire("conversation.item.input_audio_transcription.completed", item_id="item_o", transcript=texte)

    async def appeler(self, *appels):
        """A response that calls tools, each given as (name, arguments); returns what they gave."""
        await self.dire("response.created", response={"id": "resp_a", "status": "in_progress"})
        for i, (nom, arguments) in enumerate(appels):
            fini = {"name": nom, "arguments": json.dumps(arguments), "call_id": f"call_{self.numero}_{i}"}
            await self.dire("response.output_item.added", item={"id": f"item_a{i}", "type": "function_call"})
            await self.dire("response.function_call_arguments.done", response_id="resp_a", **fini)
            await self.dire("response.output_item.done", response_id="resp_a",
                            item={"id": f"item_a{i}", "type": "function_call", "status": "completed", **fini})
        await self.finir("resp_a")
        sorties = [(await self.attendre("conversation.item.create"))["item"] for _ in appels]
        assert all(s["type"] == "function_call_output" for s in sorties), sorties
        await self.attendre("response.create")
        return [s["output"] for s in sorties]

    async def parler(self, texte, secondes=0.5, fini=True):
        identite = {"response_id": "resp_p", "item_id": "item_p", "output_index": 0, "content_index": 0}
        await self.dire("response.created", response={"id": "resp_p", "status": "in_progress"})
        await self.dire("response.output_item.added", output_index=0, response_id="resp_p",
                        item={"id": "item_p", "type": "message", "role": "assistant", "content": []})
        await self.dire("conversation.item.added", item={"id": "item_p", "type": "message", "role": "assistant"})
        son = pcm(secondes)
        for i in range(0, len(son), 9600):
            await self.dire("response.output_audio.delta", delta=base64.b64encode(son[i:i + 9600]).decode(), **identite)
        await self.dire("response.output_audio_transcript.done", transcript=texte, **identite)
        if fini:
            await self.dire("response.output_item.done", response_id="resp_p", output_index=0,
                            item={"id": "item_p", "type": "message", "role": "assistant", "status": "completed",
                                  "content": [{"type": "output_audio", "transcript": texte}]})
            await self.finir("resp_p")

    async def finir(self, reponse, statut="completed"):
        await self.dire("response.done", response={
            "id": reponse, "status": statut, "output": [],
            "usage": {"input_token_details": {"text_tokens": 900, "audio_tokens": 40, "cached_tokens": 600,
                                              "cached_tokens_details": {"text_tokens": 600, "audio_tokens": 0}},
                      "output_token_details": {"text_tokens": 30, "audio_tokens": 90}}})
