// Shows the data that the gateway sends as server-sent events, and runs commands. All data becomes textContent, so
// the browser shows the markup in a message as text.
"use strict";

const OTHER_NUMBER = "+4917099999";  // the settings do not permit this number
const EXAMPLES = {
  "ping": (password) => password + "#ping 8.8.8.8 3",
  "reboot": (password) => password + "#reboot",
  "wrong password": () => "p wrong #reboot",
  "plain text": () => "Good morning!",
};
const LOG_LINES = 500;

const data = { settings: null, phones: [], modem: { unread: [], read: [] }, folders: {}, refusals: {} };
const added = [];
let sender = null, shown = 0;

const at = (id) => document.getElementById(id);
function element(name, properties = {}, ...children) {
  const made = Object.assign(document.createElement(name), properties);
  made.append(...children);
  return made;
}
const tag = (text, kind = "") => element("span", { className: "tag " + kind, textContent: text });
const readable = (text) => (/^\s+$/.test(text) ? `(${text.length} blanks)` : text || "(no text)");

// Replaces the cards of a list by `cards`, each [key, content...]. Open details stay open; the focus stays on its card.
function fill(list, cards, empty) {
  const known = new Set([...list.children].map((card) => card.dataset.key));
  const open = new Set([...list.querySelectorAll("[open]")].map((one) => one.parentElement.dataset.key));
  const focused = list.contains(document.activeElement) && document.activeElement.closest("li")?.dataset.key;
  list.replaceChildren(...cards.map(([key, ...content]) => {
    const card = element("li", { className: known.size && !known.has(key) ? "card fresh" : "card" }, ...content);
    card.dataset.key = key;
    return card;
  }));
  if (!cards.length) list.append(element("li", { className: "empty", textContent: empty }));
  for (const card of list.children) {
    const details = card.querySelector("details");
    if (details) details.open = open.has(card.dataset.key);
    if (details && focused === card.dataset.key) details.querySelector("summary").focus();
  }
}

// Phone
const mayCommand = (number) => !data.settings.whitelist?.enabled
  || (data.settings.whitelist.numbers || []).includes(number);
const password = () => (data.settings.password?.enabled ? `p ${data.settings.password.text} ` : "");

function showPhone() {
  if (!data.settings) return;  // the first settings arrive after the first texts
  const permitted = (data.settings.whitelist?.numbers || []).map(String);
  const numbers = [...new Set([...permitted, OTHER_NUMBER, ...data.phones.map((text) => text.number), ...added])];
  sender ??= numbers[0];
  const labels = numbers.map((number) => number + (mayCommand(number) ? " (permitted)" : " (not permitted)"));
  if (at("sender").dataset.labels !== labels.join()) {
    at("sender").dataset.labels = labels.join();
    at("sender").replaceChildren(...labels.map((label, i) => new Option(label, numbers[i])), new Option("another number …", ""));
  }
  at("sender").value = sender;
  at("allowed").textContent = hint();
  showConversation();
}
function hint() {
  if (!data.settings.enabled) return "Commands are switched off.";
  return mayCommand(sender) ? `A command: ${password()}#keyword …` : "veld does not execute commands from this number.";
}
function showConversation() {
  const list = at("conversation");
  const texts = data.phones.filter((text) => text.number === sender);
  if (shown === 0) list.replaceChildren();
  for (const { text, written, time } of texts.slice(shown))
    list.append(element("li", { className: written ? "written" : "" }, readable(text),
      element("small", { textContent: (written ? "you, " : "gateway, ") + time.slice(11, 16) })));
  if (texts.length > shown) requestAnimationFrame(() => { list.scrollTop = list.scrollHeight; });
  shown = texts.length;
}
function choose(number) {
  sender = number;
  shown = 0;
  at("another").hidden = true;
  showPhone();
  at("text").focus();
}

// Gateway
function messageCard(place, key, number, time, text, tags, file) {
  return [key, tag(place, place), element("span", { className: "hint", textContent: time }),
    element("b", { textContent: number }),
    element("div", {}, element("span", { className: "text", textContent: readable(text) }), ...tags),
    element("details", {}, element("summary", { textContent: "file" }), element("pre", { textContent: file }))];
}
function modemCard(listed, i) {
  const [, number] = listed.match(/^addr: (.*)$/m) || ["", ""];
  const [, text] = listed.match(/^user-data: "(.*)"$/m) || ["", listed];
  return messageCard("modem", "modem" + i + listed, number, "", text, [], listed);
}
function recordCard(record, folder) {
  const path = (folder === "received" ? "inbox/" : "outbox/") + folder + "/";
  if (!record?.guid) return messageCard(folder, folder + JSON.stringify(record), "", "", String(record), [tag("not a record", "warn")], path);
  const tags = [];
  const refusal = /#/.test(record.message) && !record.isSMSCommand && data.refusals[record.source + " " + record.message];
  if (record.isSMSCommand) tags.push(tag("command, passed on"));
  if (refusal) tags.push(tag("not executed: " + refusal, "warn"));
  if (record.parts) tags.push(tag(`${record.parts.filter((part) => part !== null).length} of ${record["part-count"]} parts`, "warn"));
  if (folder === "failed") tags.push(tag(record.retries === 1 ? "1 retry left" : `${record.retries ?? 0} retries left`, "warn"));
  const guid = String(record.guid);
  return messageCard(folder, guid + folder, record.source ?? record.recipient ?? "", guid.replace(/^\d{8}(\d\d)(\d\d)(\d\d).*/, "$1:$2:$3"),
    String(record.message ?? ""), tags, path + guid + "\n" + JSON.stringify(record, null, 2));
}
function showMessages() {
  const waiting = [...data.modem.unread, ...data.modem.read];
  at("counts").textContent = [["modem", waiting], ...Object.entries(data.folders)].map(([name, all]) => `${name} ${all.length}`).join(", ");
  const filed = Object.entries(data.folders).flatMap(([folder, records]) => records.map((record) => recordCard(record, folder)));
  fill(at("messages"), [...waiting.map(modemCard).reverse(), ...filed.sort(([one], [other]) => (one < other ? 1 : -1))], "No messages.");
}
function problemOf({ answered, code }) {
  if (!answered) return "waits for an answer";
  if (code === 0) return "no answer";
  return code === 200 ? "" : "answered " + code;
}
function requestCard(request, i) {
  const problem = problemOf(request);
  const content = [element("code", { textContent: request.method + " " + request.path })];
  if (problem) content.push(" ", tag(problem, "warn"));
  if (request.body) content.push(element("pre", { textContent: request.body }));
  if (request.outcome) content.push(element("p", { className: "outcome", textContent: request.outcome }));
  return ["request" + i, ...content];
}

function log(className, text, level = "") {
  const list = at("log");
  const follows = list.scrollHeight - list.scrollTop - list.clientHeight < 40;
  list.append(element("li", { className }, element("b", { textContent: level }), element("span", { textContent: text })));
  while (list.childElementCount > LOG_LINES) list.firstChild.remove();
  if (follows) list.scrollTop = list.scrollHeight;
}

function daemonState({ running, process, ending, hang }) {
  if (hang) return hang;
  if (running) return "veld runs as process " + process;
  return ending ? "veld ended with status " + ending : "veld is not running";
}
const SHOW = {
  daemon: (daemon) => {
    at("daemon").textContent = daemonState(daemon);
    at("daemon").className = "state " + (daemon.running && !daemon.hang ? "running" : "ended");
    at("start").hidden = daemon.running;
    at("restart").hidden = !daemon.running;
  },
  clock: (now) => { at("clock").textContent = now; },
  settings: showPhone,
  phones: showPhone,
  modem: showMessages,
  folders: showMessages,
  refusals: showMessages,
  requests: (all) => fill(at("requests"), all.map(requestCard).reverse(), "No requests."),
  faults: (lines) => {
    at("faults").textContent = lines.join("; ") || "Everything works.";
    at("faults").className = lines.length ? "wrong" : "";
  },
  log: (lines) => {
    for (const { level, text } of lines) log(level, text.replace(/^VELD: (\[[A-Z]+\] )?/, ""), level);
  },
};
const source = new EventSource("/events");
source.onopen = () => at("log").replaceChildren();
source.onerror = () => SHOW.daemon({ hang: "the gateway has ended" });
for (const [name, show] of Object.entries(SHOW)) {
  source.addEventListener(name, (event) => {
    data[name] = JSON.parse(event.data) ?? {};
    show(data[name]);
  });
}

// Commands
const quoted = (text) => '"' + text.replace(/[\\"]/g, "\\$&").replace(/\r?\n/g, "\\n") + '"';
function say(text, good) {
  at("said").textContent = text;
  at("said").className = good ? "" : "wrong";
}
// Runs a command line and shows the answer in the bar and in the log. Returns true if the command succeeded.
async function run(line) {
  say(line + " …", true);
  log("typed", "> " + line);
  let answer = { good: false, text: "The gateway does not answer." };
  try {
    const response = await fetch("/command", { method: "POST", body: line });
    answer = response.ok ? await response.json() : { good: false, text: await response.text() };
  } catch { /* `answer` keeps its first value */ }
  say(answer.text.includes("\n") ? "The log shows the answer." : answer.text, answer.good);
  log(answer.good ? "" : "wrong", answer.text);
  return answer.good;
}
function submits(id, action) {
  at(id).addEventListener("submit", (event) => { event.preventDefault(); action(); });
}
submits("another", () => { added.push(at("another-number").value); choose(at("another-number").value); at("another").reset(); });
submits("write", async () => { if (await run(`receive ${quoted(sender)} ${quoted(at("text").value)}`)) at("text").value = ""; });
submits("queue", () => run(`queue ${quoted(at("queue-number").value)} ${quoted(at("queue-text").value)} --retries ${at("queue-retries").value}`));
submits("console", async () => { if (await run(at("console-line").value)) at("console-line").value = ""; });
at("refuse").addEventListener("click", () => run(`refuse ${quoted(at("queue-number").value)}`));
at("sender").addEventListener("change", () => {
  if (at("sender").value) return choose(at("sender").value);
  at("another").hidden = false;
  at("another-number").focus();
});
at("text").addEventListener("keydown", (event) => {
  if (event.key === "Enter" && !event.shiftKey && !event.isComposing) { event.preventDefault(); at("write").requestSubmit(); }
});
for (const [name, text] of Object.entries(EXAMPLES))
  at("examples").append(element("button", { type: "button", textContent: name, onclick: () => { at("text").value = text(password()); at("text").focus(); } }));
for (const button of document.querySelectorAll("[data-run]")) button.addEventListener("click", () => run(button.dataset.run));
