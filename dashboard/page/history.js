// What was on air lately, from the store; asked for again when something new is on.

import {get} from './api.js';
import {element, fill, itemText} from './dom.js';

const most = 20;
const pause = 1500;  // ms, for the store to have it

export class History {
  constructor(number) {
    this.number = number;
    this.rows = element('tbody', {});
    this.answer = element('p', {class: 'soft'});
    this.frame = element('section', {'aria-label': 'History'}, element('h3', {}, 'History'), this.answer,
      element('table', {}, element('thead', {}, element('tr', {}, element('th', {scope: 'col'}, 'Time'),
        element('th', {scope: 'col'}, 'Item'), element('th', {scope: 'col'}, 'Type'))), this.rows));
    this.known = undefined;
  }

  draw(station) {
    const current = JSON.stringify(station.current);
    if (this.known === current) return;
    clearTimeout(this.timer);
    this.timer = setTimeout(() => this.load(), this.known === undefined ? 0 : pause);
    this.known = current;
  }

  async load() {
    try {
      const records = await get(`/api/v1/history?service=${this.number}&last=${most}`);
      fill(this.answer, records.length === 0 ? 'Nothing yet' : '');
      fill(this.rows, ...records.map((record) => element('tr', {},
        element('td', {}, new Date(record.moment).toLocaleTimeString()),
        element('td', {}, itemText(record) || '–'), element('td', {}, record.type ?? ''))));
    } catch (problem) {
      fill(this.answer, problem.message);
    }
  }
}
