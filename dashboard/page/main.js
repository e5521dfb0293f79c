// The page: keeps the stations as the publisher tells them, and draws the overview or one station.

import {get, listen, logIn, logOut} from './api.js';
import {countAges} from './dom.js';
import {drawOverview} from './overview.js';
import {drawStation} from './station.js';

const stations = new Map();   // by number
const latencies = new Map();  // by station and output: the last publications' milliseconds
const notes = [];             // the last lines of the journal, newest first
let known = false;            // the publisher has told which stations there are
const content = document.getElementById('content');
const link = document.getElementById('link');

const mostLatencies = 40;
const mostNotes = 200;

function keepLatencies(station) {
  for (const output of station.outputs) {
    if (output.latencyMs === null) continue;
    const key = `${station.number}/${output.name}`;
    const kept = latencies.get(key) ?? {published: '', values: []};
    if (kept.published !== output.published) kept.values.push(output.latencyMs);
    kept.published = output.published;
    kept.values.splice(0, kept.values.length - mostLatencies);
    latencies.set(key, kept);
  }
}

function onEvent(name, data) {
  if (name === 'services') {
    known = true;
    stations.clear();
    for (const station of data.services) stations.set(station.number, station);
    document.getElementById('about').textContent = `ZEB ${data.version}`;
  } else if (name === 'service') {
    stations.set(data.number, data);
  } else if (name === 'note') {
    notes.unshift(data);
    notes.splice(mostNotes);
  }
  for (const station of stations.values()) keepLatencies(station);
  if (known) drawSoon();
}

function onLink(live, since) {
  link.classList.toggle('lost', !live);
  link.textContent = live ? '' :
    `No connection to the publisher: what is shown is of ${new Date(since).toLocaleTimeString()}`;
}

let drawWaits = false;
function drawSoon() {
  if (drawWaits) return;
  drawWaits = true;
  requestAnimationFrame(() => {
    drawWaits = false;
    draw();
  });
}

function draw() {
  const number = Number(/^#\/(\d+)$/.exec(location.hash)?.[1] ?? 0);
  const station = stations.get(number);
  if (station) {
    drawStation(content, station, {latencies, notes});
  } else {
    drawOverview(content, [...stations.values()].sort((a, b) => a.number - b.number));
  }
  document.title = station ? `${station.name} – ZEB` : 'ZEB';
}

const session = document.getElementById('session');
function showSession(open) {
  session.dataset.open = open ? 'yes' : '';
  session.textContent = open ? 'Log out' : 'Log in';
}
session.onclick = async () => {
  if (session.dataset.open) {
    await logOut();
    location.reload();  // what only the logged-on may see goes
  } else if (await logIn()) {
    showSession(true);
  }
};

addEventListener('hashchange', () => {
  if (known) draw();
  content.focus();
});
setInterval(countAges, 1000);

// From another machine nothing is shown before the log-on.
async function start() {
  const may = await get('/api/v1/session');
  showSession(may.loggedOn);
  if (!may.mayRead) {
    const why = may.passwordSet ? 'The stations are shown to those who know the password.' :
      'No password is set. On the publisher\u2019s machine: zebctl dashboard password';
    while (!(await logIn(why)));
    showSession(true);
  }
  listen(onEvent, onLink);  // the first event draws
}
content.replaceChildren('Asking the publisher …');
start().catch((problem) => {
  link.classList.add('lost');
  link.textContent = `The publisher does not answer: ${problem.message}`;
  setTimeout(() => location.reload(), 5000);
});
