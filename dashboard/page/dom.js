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
  made.append(...children.filter((child) => child !== undefined && child !== null && child !== ''));
  return made;
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
    `${(100 * i) / (values.length - 1)},${19 - (18 * value) / most}`).join(' '));
  picture.append(line);
  return picture;
}

const marks = {ok: '✔', busy: '…', off: '–', failing: '✘'};

export function mark(severity, words = severity) {
  return element('span', {class: `mark ${severity}`}, `${marks[severity] ?? '?'} ${words}`);
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
  for (const shown of document.querySelectorAll('[data-since]'))
    shown.textContent = shown.dataset.before + age(shown.dataset.since) + shown.dataset.behind;
}

export function itemText(item) {
  if (!item || (!item.title && !item.artists)) return '';
  return item.artists ? `${item.title} – ${item.artists}` : item.title;
}
