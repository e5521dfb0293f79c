// The outputs of one station, live: what each shows, how it stands, how long it took, and a test.

import {act} from './api.js';
import {ageOf, element, fill, fillKeyed, mark, plural, sparkline} from './dom.js';

function fillPage(details, page) {
  fill(details.querySelector('summary'), `${page.name}, ${plural(page.bytes, 'byte')}`);
  fill(details.querySelector('pre'), page.firstLines);
}

function makePage() {
  return element('details', {}, element('summary', {}), element('pre', {tabindex: 0}));
}

function fillShown(place, output) {
  if (output.text) {
    fillKeyed(place, [output.text], () => 'text', () => element('pre', {tabindex: 0}), (pre, text) => fill(pre, text));
  } else {
    fillKeyed(place, output.pages, (page) => page.name, makePage, fillPage);
  }
}

function howLong(output, latencies) {
  if (!output.published) return [element('span', {}, 'nothing sent yet')];
  const late = output.stale && output.severity !== 'failing';
  return [
    ageOf(output.published, 'sent '),
    output.latencyMs === null ? '' : `, ${output.latencyMs.toFixed(1)} ms after the line `,
    output.onAirMs === null ? '' : `, on air ${(output.onAirMs / 1000).toFixed(1)} s after the line `,
    sparkline(latencies),
    late ? mark('busy', ' shows an older item') : '',
    output.progress === null ? '' : ` ${output.progress} % sent`,
  ];
}

function steps(result) {
  return result.steps.map((step) => element('li', {}, mark(step.ok ? 'ok' : 'failing', step.text)));
}

function makeTest(number, output) {
  const answer = element('ul', {class: 'steps', role: 'status'});
  const button = element('button', {type: 'button', 'aria-label': `Test ${output.name}`, onclick: async () => {
    button.disabled = true;
    fill(answer, element('li', {}, 'Trying …'));
    try {
      fill(answer, ...steps(await act(
        `/api/v1/services/${number}/outputs/${output.type}/${output.number}/test`)));
    } catch (problem) {
      fill(answer, element('li', {}, mark('failing', problem.message)));
    }
    button.disabled = false;
  }}, 'Test');
  return element('div', {class: 'wide test'}, button, answer);
}

function makeRow(number, output) {
  const part = (name, attributes = {}) => element('div', {...attributes, 'data-part': name});
  return element('li', {},
    part('name'), part('status'), part('times', {class: 'wide soft'}), part('problem', {class: 'wide problem'}),
    part('shown', {class: 'wide'}), makeTest(number, output));
}

function fillRow(row, output, latencies) {
  const part = (name) => row.querySelector(`[data-part=${name}]`);
  row.className = `output ${output.severity}`;
  row.dataset.output = output.name;
  fill(part('name'), element('strong', {}, output.name), ' ', element('span', {class: 'soft'}, output.info));
  fill(part('status'), mark(output.severity, output.status || output.severity));
  fill(part('times'), ...howLong(output, latencies));
  fill(part('problem'), ...(output.problem ? [output.problem, ' ', ageOf(output.failingSince, '(for ', ')')] : []));
  fillShown(part('shown'), output);
}

export class Outputs {
  constructor(number) {
    this.number = number;
    this.rows = element('ul', {class: 'outputs'});
    this.frame = element('section', {'aria-label': 'Outputs'}, element('h3', {}, 'Outputs'), this.rows);
  }

  // `latenciesOf(name)`: the last values of an output, in milliseconds.
  draw(station, latenciesOf) {
    fillKeyed(this.rows, station.outputs, (output) => output.name,
      (output) => makeRow(this.number, output),
      (row, output) => fillRow(row, output, latenciesOf(output.name)));
  }
}
