// One station: what is on air, its outputs live, and what can be done. The parts that people type into are
// made once and kept, so that news never takes a half-written line away.

import {act} from './api.js';
import {ageOf, element, itemText, mark, sparkline} from './dom.js';
import {makePlayground} from './playground.js';

const kept = {number: 0, parts: undefined};

export function drawStation(content, station, shared) {
  if (kept.number !== station.number || !content.contains(kept.parts?.frame)) {
    kept.number = station.number;
    kept.parts = makeParts(station);
    content.replaceChildren(kept.parts.frame);
  }
  kept.parts.live.replaceChildren(...live(station));
  kept.parts.outputs.replaceChildren(element('h3', {}, 'Outputs'),
    ...station.outputs.map((output) => outputRow(station, output, shared.latencies)));
  kept.parts.notes.replaceChildren(...shared.notes.map((note) =>
    element('li', {}, element('span', {class: 'soft'}, new Date(note.time).toLocaleTimeString()), ` ${note.text}`)));
}

function makeParts(station) {
  const parts = {
    live: element('div', {}),
    outputs: element('section', {'aria-label': 'Outputs'}),
    notes: element('ul', {class: 'notes'}),
  };
  parts.frame = element('div', {}, parts.live, parts.outputs, entrySection(station.number),
    makePlayground(station.number), element('section', {}, element('h3', {}, 'Journal'), parts.notes));
  return parts;
}

function list(title, items) {
  return element('section', {}, element('h3', {}, title),
    items.length === 0 ? element('p', {class: 'soft'}, 'None') :
      element('ol', {}, ...items.map((item) => element('li', {}, itemText(item) || '–'))));
}

function live(station) {
  const words = [station.source.text, station.source.controller ? `${station.source.controller} has control` : '']
    .filter(Boolean).join(', ');
  return [
    element('h2', {}, station.name),
    element('section', {},
      element('p', {class: 'onair'}, itemText(station.current) || 'Nothing on air yet'),
      element('p', {class: 'soft'}, [station.current.type, station.show.title, station.presenter.name]
        .filter(Boolean).join(' · ')),
      element('p', {}, mark(station.source.state === 'ok' ? 'ok' : 'failing', `Source: ${words || 'none'}`)),
      ...Object.values(station.panels).filter((text) => text && text !== station.source.text)
        .map((text) => element('p', {class: 'soft'}, text))),
    element('div', {class: 'columns'}, list('Next', station.next.slice(0, 5)),
      list('Played', station.previous.slice(0, 10))),
  ];
}

function shownOf(output) {
  if (output.text) return [element('pre', {}, output.text)];
  return output.pages.map((page) => element('details', {},
    element('summary', {}, `${page.name}, ${page.bytes} bytes`), element('pre', {}, page.firstLines)));
}

function outputRow(station, output, latencies) {
  const values = latencies.get(`${station.number}/${output.name}`)?.values ?? [];
  const age = output.published ? ageOf(output.published) : 'nothing sent yet';
  const late = output.stale && output.severity !== 'failing' ? mark('busy', 'shows an older item') : '';
  return element('div', {class: `output ${output.severity}`, 'data-output': output.name},
    element('div', {}, element('strong', {}, output.name), ' ', element('span', {class: 'soft'}, output.info)),
    element('div', {}, mark(output.severity, output.status || output.severity)),
    element('p', {class: 'wide soft'}, age,
      output.latencyMs === null ? '' : `, ${output.latencyMs.toFixed(1)} ms after the line `,
      output.onAirMs == null ? '' : `, on air ${(output.onAirMs / 1000).toFixed(1)} s after the line `,
      sparkline(values), ' ', late, output.progress === null ? '' : ` ${output.progress} % sent`),
    output.problem ? element('p', {class: 'wide problem'}, output.problem, ' ',
      ageOf(output.failingSince, '(for ', ')')) : '',
    element('div', {class: 'wide'}, ...shownOf(output)),
    element('p', {class: 'wide buttons'}, testButton(station.number, output)));
}

const testAnswers = new Map();  // by station and output

function testButton(number, output) {
  const key = `${number}/${output.name}`;
  const answer = element('span', {role: 'status'}, ...(testAnswers.get(key) ?? []));
  const button = element('button', {type: 'button', onclick: async () => {
    button.disabled = true;
    answer.replaceChildren('Trying …');
    try {
      const result = await act(`/api/v1/services/${number}/outputs/${output.type}/${output.number}/test`);
      testAnswers.set(key, result.steps.map((step) =>
        element('span', {}, mark(step.ok ? 'ok' : 'failing', step.text), ' ')));
    } catch (problem) {
      testAnswers.set(key, [mark('failing', problem.message)]);
    }
    answer.replaceChildren(...testAnswers.get(key));
    button.disabled = false;
  }}, 'Test');
  return element('span', {}, button, ' ', answer);
}

function field(caption, name, attributes = {}) {
  return element('label', {}, caption, element('input', {name, autocomplete: 'off', ...attributes}));
}

function choice(caption, name, options) {
  return element('label', {}, caption, element('select', {name},
    ...options.map(([value, text]) => element('option', {value}, text))));
}

function entrySection(number) {
  const answer = element('span', {role: 'status'});
  const tell = async (path, body, done) => {
    try {
      await act(`/api/v1/services/${number}/${path}`, body);
      answer.replaceChildren(mark('ok', done));
    } catch (problem) {
      answer.replaceChildren(mark('failing', problem.message));
    }
  };
  const form = element('form', {class: 'entry', onsubmit: (event) => {
    event.preventDefault();
    const entry = Object.fromEntries(new FormData(form));
    const {slot, ...item} = entry;
    tell(`items/${slot}`, item, 'Set');
  }},
    choice('Set the item', 'slot', [['current', 'on air'], ['next', 'next'], ['coming', 'coming soon'],
      ['previous', 'played']]),
    field('Title', 'title'), field('Artist', 'artist'),
    choice('Type', 'type', [['song', 'Song'], ['link', 'Link'], ['spot', 'Spot'], ['other', 'Other']]),
    field('Cart number', 'cart', {inputmode: 'numeric'}), field('Notes', 'notes'),
    element('p', {class: 'buttons'}, element('button', {type: 'submit'}, 'Set'),
      element('button', {type: 'button', onclick: () => tell('update', {}, 'Update begun')}, 'Update now'), answer));
  return element('section', {}, element('h3', {}, 'By hand'), form);
}
