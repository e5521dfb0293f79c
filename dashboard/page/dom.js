// Making elements. Texts from the station are only ever set as text, never as markup.

// element('p', {class: 'soft', onclick: work}, 'text', child, …)
export function element(name, attributes = {}, ...children) {
  const made = document.createElement(name);
  for (const [key, value] of Object.entries(attributes)) {
    if (value === undefined || value === null || value === false) continue;
    if (key.startsWith('on')) made.addEventListener(key.slice(2), value);
    else if (key === 'value') made.value = value;
    else made.setAttribute(key, value === true ? '' : value);
  }
  fill(made, ...children);
  return made;
}

const shows = (child) => child !== undefined && child !== null && child !== '';

// Puts children in place of those that are there. A child that stays the same is not touched, so that what is
// being read, or has the focus, stays.
export function fill(parent, ...children) {
  const made = document.createDocumentFragment();
  made.append(...children.filter(shows));
  const old = [...parent.childNodes];
  const fresh = [...made.childNodes];
  fresh.forEach((node, i) => {
    if (i >= old.length) parent.append(node);
    else if (!old[i].isEqualNode(node)) old[i].replaceWith(node);
  });
  old.slice(fresh.length).forEach((node) => node.remove());
}

// One element for each thing, by key, in order; elements of things that stay are kept and not moved without
// need. `make` makes an element, `update(element, thing)` brings it up to date.
export function fillKeyed(parent, things, keyOf, make, update) {
  const old = new Map([...parent.children].map((child) => [child.dataset.key, child]));
  let place = parent.firstElementChild;
  for (const thing of things) {
    const key = String(keyOf(thing));
    const child = old.get(key) ?? make(thing);
    old.delete(key);
    child.dataset.key = key;
    if (child === place) place = place.nextElementSibling;
    else parent.insertBefore(child, place);
    update(child, thing);
  }
  for (const child of old.values()) child.remove();
}

const svg = 'http://www.w3.org/2000/svg';

// A line through the last values, for people who can see it; others read the number beside it.
export function sparkline(values) {
  const picture = document.createElementNS(svg, 'svg');
  picture.setAttribute('class', 'spark');
  picture.setAttribute('viewBox', '0 0 100 20');
  picture.setAttribute('preserveAspectRatio', 'none');
  picture.setAttribute('aria-hidden', 'true');
  if (values.length < 2) return picture;
  const most = Math.max(...values, 1e-9);
  const line = document.createElementNS(svg, 'polyline');
  line.setAttribute('points', values.map((value, i) =>
    `${((100 * i) / (values.length - 1)).toFixed(1)},${(19 - (18 * value) / most).toFixed(1)}`).join(' '));
  picture.append(line);
  return picture;
}

const marks = {ok: '✔', busy: '…', off: '–', failing: '✘'};

export function mark(severity, words = severity) {
  return element('span', {class: `mark ${severity}`}, `${marks[severity] ?? '?'}\u00a0${words}`);
}

// "4 s", "3 min", "2 h", "5 days" since a moment.
export function age(moment, now = Date.now()) {
  if (!moment) return '';
  const seconds = Math.max(0, Math.round((now - Date.parse(moment)) / 1000));
  if (seconds < 120) return `${seconds} s`;
  if (seconds < 7200) return `${Math.round(seconds / 60)} min`;
  if (seconds < 172800) return `${Math.round(seconds / 3600)} h`;
  return `${Math.round(seconds / 86400)} days`;
}

// An element that shows an age and goes on counting.
export function ageOf(moment, before = '', behind = ' ago') {
  return element('span', {'data-since': moment, 'data-before': before, 'data-behind': behind},
    before + age(moment) + behind);
}

export function countAges() {
  for (const shown of document.querySelectorAll('[data-since]')) {
    const text = shown.dataset.before + age(shown.dataset.since) + shown.dataset.behind;
    if (shown.textContent !== text) shown.textContent = text;
  }
}

export function itemText(item) {
  if (!item || (!item.title && !item.artists)) return '';
  return item.artists ? `${item.title} – ${item.artists}` : item.title;
}

export function plural(count, word) {
  return `${count} ${word}${count === 1 ? '' : 's'}`;
}
