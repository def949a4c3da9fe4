// The bridge's work done with the official SDK, as a point of comparison: the same tools, each call
// posted to the door, the reply handed back. TARNAVELLE_OUTILS names the file of the tools' list.
import { readFileSync } from "node:fs";

import { Server } from "@modelcontextprotocol/sdk/server/index.js";
import { StdioServerTransport } from "@modelcontextprotocol/sdk/server/stdio.js";
import { CallToolRequestSchema, ListToolsRequestSchema } from "@modelcontextprotocol/sdk/types.js";

const { TARNAVELLE_OUTILS, TARNAVELLE_CONTROL_URL: url, TARNAVELLE_CONTROL_TOKEN: jeton } = process.env;
const { tools } = JSON.parse(readFileSync(TARNAVELLE_OUTILS, "utf8"));

const serveur = new Server({ name: "serveur-sdk", version: "1.0.0" }, { capabilities: { tools: {} } });
serveur.setRequestHandler(ListToolsRequestSchema, () => ({ tools }));
serveur.setRequestHandler(CallToolRequestSchema, async ({ params }) => {
  const reponse = await fetch(`${url}/action`, {
    method: "POST",
    headers: { Authorization: `Bearer ${jeton}`, "Content-Type": "application/json" },
    body: JSON.stringify({ ...params.arguments, action: params.name.replace(/^trv_/, "") }),
  });
  const texte = await reponse.text();
  return { content: [{ type: "text", text: texte }], isError: JSON.parse(texte).ok !== true };
});
await serveur.connect(new StdioServerTransport());
