// Follows the gateway by server-sent events, a pane each, and runs its commands. Whatever came in is shown by
// textContent: a text is a text, whatever it looks like.
"use strict";

const STRANGER = "+4917099999";
const FOLDERS = {
  received: "came in from a phone",
  sending: "wait for the next pass",
  sent: "the modem took them",
  failed: "tried again later, while they have retries left",
};
const EXAMPLES = {
  "ping": (pw) => pw + "#ping 8.8.8.8 3",
  "reboot": (pw) => pw + "#reboot",
  "wrong password": () => "p wrong #reboot",
  "plain text": () => "Good morning!",
};
const LOG_LINES = 500;

const at = (id) => document.getElementById(id);
let numbers = [], added = [], texts = [], shown = 0, commands = null, refusals = {}, folders = null, sender = null;

function element(name, properties = {}, ...children) {
  const made = Object.assign(document.createElement(name), properties);
  made.append(...children);
  return made;
}
const quoted = (text) => '"' + text.replace(/[\\"]/g, "\\$&").replace(/\r?\n/g, "\\n") + '"';

// Runs a command line; the answer also shows on the page.
async function run(line) {
  say("…", true);
  try {
    const response = await fetch("/command", { method: "POST", body: line });
    const answer = response.ok ? await response.json() : { good: false, text: await response.text() };
    say(answer.text, answer.good);
    return answer;
  } catch {
    say("The gateway does not answer.", false);
    return { good: false, text: "" };
  }
}
function say(text, good) {
  at("said").textContent = text;
  at("said").classList.toggle("wrong", !good);
}

// Replaces what is in a list. What was unfolded or focused there, known by its key, stays so.
function fill(list, items, empty) {
  const known = new Set([...list.children].map((item) => item.dataset.key));
  const open = new Set([...list.querySelectorAll("details[open]")].map((item) => item.dataset.key));
  const focused = list.contains(document.activeElement) && document.activeElement.closest("[data-key]")?.dataset.key;
  const first = list.childElementCount === 0;
  list.replaceChildren(...(items.length ? items : [element("li", { className: "empty", textContent: empty })]));
  for (const item of items) item.classList.toggle("fresh", !first && !known.has(item.dataset.key));
  for (const details of list.querySelectorAll("details")) {
    details.open = open.has(details.dataset.key);
    if (focused === details.dataset.key) details.querySelector("summary").focus();
  }
}
function keyed(key, made) {
  made.dataset.key = key;
  return made;
}
const card = (key, ...children) => keyed(key, element("li", { className: "card" }, ...children));
const tag = (text, warn) => element("span", { className: warn ? "tag warn" : "tag", textContent: text });

// Phone
const mayCommand = (number) => !commands.whitelist?.enabled
  || (commands.whitelist.numbers || []).includes(number);
const password = () => (commands.password?.enabled ? `p ${commands.password.text} ` : "");

function showNumbers() {
  if (!commands) return;
  const permitted = (commands.whitelist?.numbers || []).map(String);
  const known = [...new Set([...permitted, STRANGER, ...texts.map((text) => text.number), ...added])];
  sender ??= known[0];
  if (known.join() !== numbers.join() || !at("numbers").children.length) {
    numbers = known;
    at("numbers").replaceChildren(...known.map((number) => element("button",
      { type: "button", onclick: () => choose(number) }, number, element("small"))));
  }
  [...at("numbers").children].forEach((button, i) => {
    button.ariaPressed = String(numbers[i] === sender);
    button.lastChild.textContent = mayCommand(numbers[i]) ? "may command" : "a stranger";
  });
  at("allowed").textContent = !commands.enabled ? "Commands are switched off."
    : mayCommand(sender) ? `Commands: ${password()}#keyword …` : "Its commands are filed, and not carried out.";
  at("examples").replaceChildren(...Object.entries(EXAMPLES).map(([name, text]) => element("button", {
    type: "button", textContent: name, onclick: () => { at("text").value = text(password()); at("text").focus(); } })));
}
function choose(number) {
  sender = number;
  shown = 0;
  at("conversation").replaceChildren();
  showNumbers();
  converse();
}
function converse() {
  if (!commands) return;
  const list = at("conversation");
  const mine = texts.filter((text) => text.number === sender);
  if (!mine.length) list.replaceChildren(element("li", { className: "empty", textContent: "Nothing yet." }));
  else if (shown === 0) list.replaceChildren();
  for (const text of mine.slice(shown)) {
    list.append(element("li", { className: text.written ? "written" : "" }, text.text,
      element("small", { textContent: (text.written ? "you, " : "gateway, ") + text.time.slice(11, 16) })));
  }
  if (mine.length > shown) requestAnimationFrame(() => { list.scrollTop = list.scrollHeight; });
  shown = mine.length;
}

// Gateway
function recordCard(record, folder) {
  if (typeof record !== "object" || record === null) return card(String(record), tag("no record", true), element("pre", { textContent: String(record) }));
  const key = folder + record.guid;
  const item = card(key,
    element("div", { className: "who" }, element("span", { textContent: record.source ?? record.recipient ?? "" }),
      element("span", { textContent: String(record.guid ?? "") })),
    element("div", { className: "text", textContent: String(record.message ?? "") }));
  const refusal = !record.isSMSCommand && refusals[record.source + " " + record.message];
  if (record.isSMSCommand) item.append(tag("command, passed on"));
  if (refusal) item.append(tag("no command: " + refusal, true));
  if (record.parts) item.append(tag(`${record.parts.filter((part) => part !== null).length} of ${record["part-count"]} parts`, true));
  if (folder === "failed") item.append(tag(record.retries === 1 ? "1 retry left" : `${record.retries ?? 0} retries left`, true));
  item.append(keyed(key, element("details", {}, element("summary", { textContent: "JSON" }),
    element("pre", { textContent: JSON.stringify(record, null, 2) }))));
  return item;
}
function showFolders() {
  if (!folders) return;
  for (const [name, meaning] of Object.entries(FOLDERS)) {
    let list = at("folder-" + name);
    if (!list) {
      list = element("ol", { id: "folder-" + name, className: "cards" });
      at("folders").append(element("div", {}, element("h3", {}, name + " ", element("span", { className: "count" })),
        element("p", { className: "hint", textContent: meaning }), list));
    }
    list.parentElement.querySelector(".count").textContent = folders[name].length;
    fill(list, folders[name].map((record) => recordCard(record, name)).reverse(), "empty");
  }
}
function requestCard(request, i) {
  const item = card("request" + i, element("code", { textContent: request.method + " " + request.path }));
  if (request.path.endsWith("/sms_restart")) item.append(" ", tag("reboot", true));
  if (request.code !== 200) item.append(" ", tag(request.code > 0 ? "answered " + request.code : request.code < 0 ? "no answer" : "waits", true));
  if (request.body) item.append(element("pre", { textContent: request.body }));
  return item;
}
function showModem(modem) {
  const waiting = [...modem.unread, ...modem.read];
  at("modem-count").textContent = `${waiting.length} in its store, ${modem.sent} sent`;
  fill(at("modem"), waiting.map((text, i) => card("modem" + i + text, element("pre", { textContent: text }))), "Its store is empty.");
}
function addLog(lines) {
  const list = at("log");
  const follows = list.scrollHeight - list.scrollTop - list.clientHeight < 40;
  for (const line of lines) {
    const text = line.text.replace(/^VELD: (\[[A-Z]+\] )?/, "");
    list.append(element("li", { className: line.level }, element("b", { textContent: line.level }), element("span", { textContent: text })));
  }
  while (list.childElementCount > LOG_LINES) list.firstChild.remove();
  if (follows) list.scrollTop = list.scrollHeight;
}

const PANES = {
  daemon: (daemon) => {
    at("daemon").textContent = daemon.hang || (daemon.running ? "veld runs, process " + daemon.process
      : daemon.ending ? "veld ended with status " + daemon.ending : "veld is not running");
    at("daemon").className = "state " + (daemon.running && !daemon.hang ? "running" : "ended");
    at("start").hidden = daemon.running;
    at("restart").hidden = !daemon.running;
    document.body.ariaBusy = String(daemon.busy);
  },
  clock: (now) => { at("clock").textContent = now; },
  settings: (settings) => { commands = settings || {}; showNumbers(); converse(); },
  phones: (all) => { texts = all; showNumbers(); converse(); },
  modem: showModem,
  folders: (all) => { folders = all; showFolders(); },
  refusals: (all) => { refusals = all; showFolders(); },
  requests: (all) => {
    at("requests-count").textContent = all.length === 1 ? "1 request" : all.length + " requests";
    fill(at("requests"), all.map(requestCard).reverse(), "No requests yet.");
  },
  faults: (lines) => {
    at("faults").textContent = lines.join("; ") || "Everything works.";
    at("faults").className = lines.length ? "wrong" : "";
  },
  events: (all) => fill(at("events"), all.map(({ text, reboot }, i) => keyed("event" + i,
    element("li", { className: reboot ? "reboot" : "", textContent: text }))).reverse(), "Nothing yet. When a command reaches the local API, the gateway carries it out and answers the phone."),
  log: addLog,
};

const source = new EventSource("/events");
source.onopen = () => at("log").replaceChildren();
source.onerror = () => { at("daemon").textContent = "the gateway has ended"; at("daemon").className = "state ended"; };
for (const [name, show] of Object.entries(PANES)) source.addEventListener(name, (event) => show(JSON.parse(event.data)));

function submits(id, action) {
  at(id).addEventListener("submit", (event) => { event.preventDefault(); action(); });
}
submits("another", () => { added.push(at("another-number").value); choose(at("another-number").value); at("another").reset(); at("text").focus(); });
submits("write", async () => {
  const answer = await run(`receive ${quoted(sender)} ${quoted(at("text").value)}`);
  if (answer.good) at("text").value = "";
});
submits("queue", () => run(`queue ${quoted(at("queue-number").value)} ${quoted(at("queue-text").value)} --retries ${at("queue-retries").value}`));
submits("refuse", () => run(`refuse ${quoted(at("refuse-number").value)}`));
submits("console", async () => {
  const answer = await run(at("console-line").value);
  say("", true);
  at("console-answer").hidden = false;
  at("console-answer").textContent = answer.text || "(nothing)";
  at("console-answer").className = answer.good ? "" : "wrong";
});
at("text").addEventListener("keydown", (event) => {
  if (event.key === "Enter" && !event.shiftKey && !event.isComposing) { event.preventDefault(); at("write").requestSubmit(); }
});
for (const button of document.querySelectorAll("[data-run]")) button.addEventListener("click", () => run(button.dataset.run));
