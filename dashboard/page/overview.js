// All stations at a glance, those with a problem first.

import {ageOf, element, fill, fillKeyed, itemText, mark, plural} from './dom.js';

const words = {ok: 'all well', busy: 'busy', off: 'nothing to do', failing: 'needs a look'};

function fillCard(card, station) {
  const failing = station.outputs.filter((output) => output.severity === 'failing');
  const worst = failing[0];
  const noSource = station.source.state !== 'ok';
  card.className = `card ${station.severity}`;
  fill(card,
    element('h3', {}, element('a', {href: `#/${station.number}`}, station.name || `Station ${station.number}`)),
    element('p', {}, mark(station.severity, noSource ? 'no source' : words[station.severity]), ' ',
      element('span', {class: 'soft'}, plural(station.outputs.length, 'output'))),
    element('p', {}, itemText(station.current) || element('span', {class: 'soft'}, 'Nothing on air yet')),
    noSource ? element('p', {class: 'problem'}, station.source.text) : '',
    worst ? element('p', {class: 'problem'}, `${worst.name}: ${worst.problem || worst.status} `,
      ageOf(worst.failingSince, '(for ', ')')) : '',
    failing.length > 1 ? element('p', {class: 'problem'}, `and ${plural(failing.length - 1, 'more output')}`) : '');
}

function headLine(stations) {
  const bad = stations.filter((station) => station.severity === 'failing').length;
  if (stations.length === 0) return 'No stations';
  if (bad === 0) return `${plural(stations.length, 'station')}, all well`;
  return `${bad} of ${plural(stations.length, 'station')} need${bad === 1 ? 's' : ''} a look`;
}

// `drawn` remembers which picture of a station each card shows, since thousands may be there.
export class Overview {
  constructor() {
    this.head = element('h2', {});
    this.cards = element('ul', {class: 'cards', 'aria-label': 'Stations'});
    this.advice = element('p', {}, 'Add one with ', element('code', {}, 'zebctl service add NAME'), '.');
    this.frame = element('div', {}, this.head, this.cards);
    this.drawn = new WeakMap();
  }

  draw(stations) {
    fill(this.head, headLine(stations));
    if (stations.length === 0) this.frame.append(this.advice);
    else this.advice.remove();
    const bad = (station) => (station.severity === 'failing' ? 0 : 1);
    const sorted = [...stations].sort((a, b) => bad(a) - bad(b) || a.number - b.number);
    fillKeyed(this.cards, sorted, (station) => station.number, () => element('li', {}), (card, station) => {
      if (this.drawn.get(card) === station) return;
      this.drawn.set(card, station);
      fillCard(card, station);
    });
  }
}
