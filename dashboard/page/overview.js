// All stations at a glance, those with a problem first.

import {ageOf, element, itemText, mark} from './dom.js';

function card(station) {
  const failing = station.outputs.filter((output) => output.severity === 'failing');
  const worst = failing[0];
  const words = station.source.state === 'ok' ? station.severity : 'no source';
  return element('li', {class: `card ${station.severity}`},
    element('h2', {}, element('a', {href: `#/${station.number}`}, station.name || `Station ${station.number}`)),
    element('p', {}, mark(station.severity, words), ' ',
      element('span', {class: 'soft'}, `${station.outputs.length} outputs`)),
    element('p', {}, itemText(station.current) || element('span', {class: 'soft'}, 'Nothing on air yet')),
    station.source.state === 'ok' ? '' : element('p', {class: 'problem'}, station.source.text),
    worst ? element('p', {class: 'problem'}, `${worst.name}: ${worst.problem || worst.status} `,
      ageOf(worst.failingSince, 'for ', '')) : '',
    failing.length > 1 ? element('p', {class: 'problem'}, `and ${failing.length - 1} more outputs fail`) : '');
}

export function drawOverview(content, stations) {
  const bad = stations.filter((station) => station.severity === 'failing').length;
  const sorted = [...stations].sort((a, b) => (b.severity === 'failing') - (a.severity === 'failing'));
  content.replaceChildren(
    element('h2', {}, stations.length === 0 ? 'No stations' :
      bad === 0 ? `${stations.length} stations, all well` : `${bad} of ${stations.length} stations need a look`),
    stations.length > 0 ? element('ul', {class: 'cards'}, ...sorted.map(card)) :
      element('p', {}, 'Add one with ', element('code', {}, 'zebctl service add NAME'), '.'));
}
