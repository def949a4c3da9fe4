// Drives the real bridge with the official MCP client, against a real trial door.
// TARNAVELLE_PONT and TARNAVELLE_PORTE name the two programs.
import assert from "node:assert/strict";
import { spawn } from "node:child_process";
import { existsSync, mkdtempSync, rmSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { createInterface } from "node:readline";
import { after, before, describe, test } from "node:test";

import { Client } from "@modelcontextprotocol/sdk/client/index.js";
import { StdioClientTransport } from "@modelcontextprotocol/sdk/client/stdio.js";
import { ErrorCode } from "@modelcontextprotocol/sdk/types.js";
import Ajv from "ajv";

const { TARNAVELLE_PONT: pont, TARNAVELLE_PORTE: porte } = process.env;
const maison = mkdtempSync(join(tmpdir(), "tarnavelle-sdk-"));
const fichier = join(maison, "Library/Application Support/Tarnavelle/porte-commande.json");
after(() => rmSync(maison, { recursive: true }));

// What the sanitizers are told comes along; a door of the machine's own user does not.
const monde = Object.fromEntries(
  Object.entries(process.env).filter(([nom]) => !nom.startsWith("TARNAVELLE")),
);
Object.assign(monde, { HOME: maison, TARNAVELLE_NODE_ID: "Merlin" });

/** The door, once it has said that it is open. */
async function ouvrirPorte(...options) {
  const enfant = spawn(porte, options, { env: monde, stdio: ["ignore", "pipe", "inherit"] });
  for await (const ligne of createInterface({ input: enfant.stdout })) {
    assert.match(ligne, /^Porte d'essai ouverte : http:\/\/127\.0\.0\.1:\d+/);
    return enfant;
  }
  assert.fail("la porte d'essai s'est arrêtée sans s'ouvrir");
}

async function fermer(enfant) {
  const fin = new Promise((resolve) => enfant.once("exit", resolve));
  enfant.kill("SIGTERM");
  await fin;
}

async function connecter(ajouts = {}) {
  const client = new Client({ name: "sdk-mcp", version: "1.0.0" });
  client.onerror = (erreur) => assert.fail(erreur);
  await client.connect(new StdioClientTransport({ command: pont, env: { ...monde, ...ajouts } }));
  return client;
}

/** The only content of a tool's result. */
function texte(resultat) {
  assert.equal(resultat.content.length, 1);
  assert.equal(resultat.content[0].type, "text");
  return resultat.content[0].text;
}

describe("porte ouverte", () => {
  let enfant, client;
  before(async () => {
    enfant = await ouvrirPorte();
    client = await connecter();
  });
  after(async () => {
    await client.close();
    await fermer(enfant);
    assert.equal(existsSync(fichier), false);
  });

  test("the handshake names the server and what it can do", () => {
    assert.deepEqual(client.getServerVersion(), { name: "tarnavelle-mcp", version: "1.0.0" });
    assert.deepEqual(client.getServerCapabilities(), { tools: {} });
  });

  test("every tool has a valid schema, the guide comes last", async () => {
    const { tools, nextCursor } = await client.listTools();
    assert.equal(nextCursor, undefined);
    assert.equal(tools.at(-1).name, "trv_guide");
    assert.equal(new Set(tools.map((outil) => outil.name)).size, tools.length);
    const ajv = new Ajv({ strict: true });
    for (const { name, description, inputSchema } of tools) {
      assert.match(name, /^trv_[a-z_]+$/);
      assert.ok(description.length > 40, `${name} : ${description}`);
      const arguments_ = Object.fromEntries(
        Object.entries(inputSchema.properties).map(([cle, { type }]) => [cle, { string: "x", boolean: true }[type]]),
      );
      const valider = ajv.compile(inputSchema);
      assert.ok(valider(arguments_), `${name} : ${ajv.errorsText(valider.errors)}`);
      assert.equal(valider({}), inputSchema.required.length === 0, name);
    }
  });

  test("the guide names the tile and never the token", async () => {
    const autre = await connecter({ TARNAVELLE_CONTROL_TOKEN: "jeton-tres-secret" });
    const guide = texte(await autre.callTool({ name: "trv_guide" }));
    await autre.close();
    assert.ok(guide.includes("Merlin") && guide.includes("TARNAVELLE_CONTROL_TOKEN"), guide);
    assert.ok(!guide.includes("jeton-tres-secret"));
  });

  test("a method the bridge lacks is a protocol error, and the session goes on", async () => {
    await assert.rejects(client.listPrompts(), { code: ErrorCode.MethodNotFound });
    assert.deepEqual(await client.ping(), {});
  });
});

test("calls made at the same time each get their own reply, however slow the door", async () => {
  const enfant = await ouvrirPorte("--retard-ms", "30");
  const client = await connecter();
  const raisons = ["un", "deux", "trois"];
  const appels = raisons.map((raison) => client.callTool({ name: "trv_bloque", arguments: { raison } }));
  const resultats = await Promise.all(appels);
  assert.ok(resultats.every((resultat) => resultat.isError === false));
  assert.deepEqual(
    resultats.map((resultat) => JSON.parse(texte(resultat)).spoken_text),
    raisons.map((raison) => `Merlin a besoin de vous : ${raison}`),
  );
  await client.close();
  await fermer(enfant);
});

test("asked for, today's protocol: schemas hold, waits hold nobody up, end when they are given up", async () => {
  const enfant = await ouvrirPorte();
  const client = await connecter({ TARNAVELLE_MCP_ETENDU: "1" });
  assert.deepEqual(client.getServerCapabilities(), { prompts: {}, resources: {}, tools: {} });
  assert.match(client.getInstructions(), /which agents are running/);
  // The client refuses a reply that its tool's schema does not allow.
  const { tools } = await client.listTools();
  for (const { name, inputSchema, annotations } of tools) {
    if (name === "trv_attendre") continue;
    const noms = { agent: "Milan", touches: "esc", noms: "A, B", cli: "claude", genre: "test", cible: "Milan" };
    const arguments_ = Object.fromEntries(inputSchema.required.map((nom) => [nom, noms[nom] ?? "Atelier"]));
    if (annotations.readOnlyHint) arguments_.agent = "Merlin";
    const { isError, structuredContent, content } = await client.callTool({ name, arguments: arguments_ });
    assert.ok(!annotations.readOnlyHint || !isError, `${name} : ${JSON.stringify(content)}`);
    if (structuredContent) assert.deepEqual(structuredContent, JSON.parse(content[0].text));
  }
  const attendre = (options) =>
    client.callTool({ name: "trv_attendre", arguments: { agent: "Merlin", jusqu_a: "mort" } }, undefined, options);
  const arret = new AbortController();
  const signes = [];
  const attente = attendre({ signal: arret.signal, onprogress: (signe) => signes.push(signe) });
  const finie = assert.rejects(attente, /laisse/);
  while (signes.length === 0) await client.callTool({ name: "trv_etat" });
  assert.equal(signes[0].total, 60);
  arret.abort("laisse");
  await finie;
  const { resources } = await client.listResources();
  const { prompts } = await client.listPrompts();
  const [{ text }] = (await client.readResource({ uri: resources[0].uri })).contents;
  const { messages } = await client.getPrompt({ name: prompts[0].name });
  assert.equal(text, messages[0].content.text);
  await client.close();
  await fermer(enfant);
});
