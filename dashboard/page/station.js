// One station: what is on air, its outputs live, and what can be done.

import {element, fill, itemText, mark} from './dom.js';
import {makeEntry} from './entry.js';
import {History} from './history.js';
import {Outputs} from './outputs.js';
import {makePlayground} from './playground.js';

function list(title, items) {
  return element('section', {'aria-label': title}, element('h3', {}, title),
    items.length === 0 ? element('p', {class: 'soft'}, 'None') :
      element('ol', {}, ...items.map((item) => element('li', {}, itemText(item) || '–'))));
}

function picture(station) {
  if (station.current.pictures.length === 0) return '';
  const name = encodeURIComponent(station.current.pictures[0]);
  return element('img', {class: 'picture', alt: '', src: `/api/v1/services/${station.number}/picture?${name}`});
}

function sourceWords(station) {
  return [station.source.text, station.source.controller ? `${station.source.controller} has control` : '']
    .filter(Boolean).join(', ');
}

// Without what the source's line says already.
function panels(station) {
  const {netControl, ...others} = station.panels;
  return [station.source.controller ? '' : netControl, ...Object.values(others)].filter(Boolean);
}

export class Station {
  constructor(number) {
    this.name = element('h2', {});
    this.onAir = element('section', {'aria-label': 'On air', class: 'now'});
    this.lists = element('div', {class: 'columns'});
    this.outputs = new Outputs(number);
    this.history = new History(number);
    this.notes = element('ul', {class: 'notes', tabindex: 0});
    this.frame = element('div', {}, this.name, this.onAir, this.outputs.frame, this.lists, makeEntry(number),
      this.history.frame, makePlayground(number),
      element('section', {'aria-label': 'Journal'}, element('h3', {}, 'Journal'), this.notes));
  }

  // `shared`: {latenciesOf(station, output), notes}
  draw(station, shared) {
    fill(this.name, station.name || `Station ${station.number}`);
    fill(this.onAir, picture(station), element('div', {},
      element('p', {class: 'onair', 'aria-live': 'polite'}, itemText(station.current) || 'Nothing on air yet'),
      element('p', {class: 'soft'}, [station.current.type, station.show.title, station.presenter.name]
        .filter(Boolean).join(' · ')),
      element('p', {}, mark(station.source.state === 'ok' ? 'ok' : 'failing',
        `Source: ${sourceWords(station) || 'none'}`)),
      ...panels(station).map((text) => element('p', {class: 'soft'}, text))));
    fill(this.lists, list('Next', station.next.slice(0, 5)), list('Played', station.previous.slice(0, 10)));
    this.outputs.draw(station, (name) => shared.latenciesOf(station.number, name));
    this.history.draw(station);
    fill(this.notes, ...shared.notes.map((note) => element('li', {},
      element('span', {class: 'soft'}, new Date(note.time).toLocaleTimeString()), ` ${note.text}`)));
  }
}
