// The page: keeps the stations as the publisher tells them, and draws the overview or one station.

import {listen, logIn, logOut, session} from './api.js';
import {countAges, element, fill} from './dom.js';
import {Overview} from './overview.js';
import {Station} from './station.js';

const stations = new Map();   // by number
const latencies = new Map();  // by station and output: the last publications' milliseconds
const notes = [];             // the last lines of the journal, newest first
let known = false;            // the publisher has told which stations there are
const content = document.getElementById('content');
const link = document.getElementById('link');

const mostLatencies = 40;
const mostNotes = 200;
const latencyKey = (number, name) => `${number}/${name}`;

function keepLatencies(station) {
  for (const output of station.outputs) {
    if (output.latencyMs === null) continue;
    const key = latencyKey(station.number, output.name);
    const kept = latencies.get(key) ?? {published: '', values: []};
    latencies.set(key, kept);
    if (kept.published === output.published) continue;
    kept.published = output.published;
    kept.values.push(output.latencyMs);
    kept.values.splice(0, kept.values.length - mostLatencies);
  }
}

function keep(station) {
  stations.set(station.number, station);
  keepLatencies(station);
}

function onEvent(name, data) {
  if (name === 'services') {
    known = true;
    stations.clear();
    latencies.clear();
    notes.length = 0;
    data.services.forEach(keep);
    fill(document.getElementById('about'), `ZEB ${data.version}`);
  } else if (name === 'service') {
    keep(data);
  } else if (name === 'note') {
    notes.unshift(data);
    notes.splice(mostNotes);
  }
  if (known && name !== 'alive') drawSoon();
}

function onLink(live, since) {
  link.classList.toggle('lost', !live);
  fill(link, live ? 'Live' :
    `No connection to the publisher: what is shown is of ${new Date(since).toLocaleTimeString()}`);
}

// A page in the background draws nothing; it has what came when it is looked at again.
let drawWaits = false;
function drawSoon() {
  if (drawWaits) return;
  drawWaits = true;
  requestAnimationFrame(() => {
    drawWaits = false;
    draw();
  });
}

const overview = new Overview();
const shared = {notes, latenciesOf: (number, name) => latencies.get(latencyKey(number, name))?.values ?? []};
let view = {number: -1, part: undefined};

function show(number) {
  if (view.number === number) return view.part;
  view = {number, part: number === 0 ? overview : new Station(number)};
  content.replaceChildren(view.part.frame);
  return view.part;
}

function draw() {
  const asked = Number(/^#\/(\d+)$/.exec(location.hash)?.[1] ?? 0);
  const station = stations.get(asked);
  if (station) show(asked).draw(station, shared);
  else show(0).draw([...stations.values()]);
  document.title = station ? `${station.name} – ZEB` : 'ZEB';
}

const sessionButton = document.getElementById('session');

async function followSession() {
  const state = await session();
  sessionButton.hidden = !state.passwordSet;
  sessionButton.dataset.open = state.loggedOn ? 'yes' : '';
  fill(sessionButton, state.loggedOn ? 'Log out' : 'Log in');
  return state;
}

sessionButton.onclick = async () => {
  if (!sessionButton.dataset.open) return logIn();
  await logOut();
  return location.reload();  // what only the logged-on may see goes
};

// From another machine nothing is shown before the log-on.
async function begin() {
  const state = await followSession();
  if (!state.mayRead) {
    const why = state.passwordSet ? 'The stations are shown to those who know the password.' :
      'No password is set. On the publisher\u2019s machine: zebctl dashboard password';
    while (!(await logIn(why)));
  }
  listen(onEvent, onLink);  // the first event draws
}

addEventListener('session', followSession);
addEventListener('hashchange', () => {
  if (known) draw();
  content.focus();
});
setInterval(countAges, 1000);
fill(content, 'Asking the publisher …');
begin();
