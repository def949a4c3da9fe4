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
