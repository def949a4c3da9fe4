// Notes what opencode tells its modules, as `tarnavellectl crochet` notes hooks: an append of one write each.
// The session of a sub-agent is not the agent's. https://opencode.ai/docs/plugins
import { appendFileSync } from "node:fs"

const noter = (nom, champs) => {
  try {
    const ligne = { hook_event_name: nom, programme: "opencode", quand: Date.now(), ...champs }
    appendFileSync(process.env.TARNAVELLE_CROCHETS, JSON.stringify(ligne) + "\n", { mode: 0o600 })
  } catch {}
}

export const Tarnavelle = async () => {
  const filles = new Set()
  const mienne = (session) => session && !filles.has(session)
  return {
    event: async ({ event }) => {
      const p = event.properties ?? {}
      if (event.type === "session.created" && p.info?.parentID) filles.add(p.info.id)
      if (event.type === "session.idle" && mienne(p.sessionID)) noter(event.type, { session_id: p.sessionID })
      // Whoever asks for leave, it is asked of the person.
      if (event.type.startsWith("permission.")) noter(event.type, {})
    },
    "chat.message": async ({ sessionID }, { parts }) => {
      const prompt = (parts ?? []).map((p) => p.text ?? "").join("\n").slice(0, 8192)
      if (mienne(sessionID)) noter("chat.message", { session_id: sessionID, prompt })
    },
    "tool.execute.before": async ({ sessionID, tool }) => {
      if (mienne(sessionID)) noter("tool.execute.before", { session_id: sessionID, tool_name: tool })
    },
    "tool.execute.after": async ({ sessionID, tool }) => {
      if (mienne(sessionID)) noter("tool.execute.after", { session_id: sessionID, tool_name: tool })
    },
  }
}
