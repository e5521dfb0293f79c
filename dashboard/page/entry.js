// What a person sets by hand: items, the next one on air, presenter and show, an update at once.

import {act, get} from './api.js';
import {element, fill, mark} from './dom.js';

const pause = 250;  // ms without a key before the carts are searched

function field(caption, name, attributes = {}) {
  return element('label', {}, caption, element('input', {name, autocomplete: 'off', ...attributes}));
}

function choice(caption, name, options) {
  return element('label', {}, caption, element('select', {name},
    ...options.map(([value, text]) => element('option', {value}, text))));
}

const slots = [['current', 'on air'], ['next', 'next'], ['coming', 'coming soon'], ['previous', 'played']];
const types = [['song', 'Song'], ['link', 'Link'], ['spot', 'Spot'], ['other', 'Other']];

// A search whose results are buttons; choosing one calls `take` with it.
function cartSearch(number, take) {
  const found = element('ul', {class: 'found', 'aria-label': 'Carts found'});
  let timer;
  let asked = 0;
  const choose = (cart) => {
    fill(found);
    take(cart);
  };
  const search = async (query) => {
    const mine = ++asked;
    if (!query) return fill(found);
    let lines;
    try {
      const {carts} = await get(`/api/v1/services/${number}/carts?q=${encodeURIComponent(query)}`);
      lines = carts.length === 0 ? [element('li', {}, 'No cart has that')] : carts.map((cart) =>
        element('li', {}, element('button', {type: 'button', onclick: () => choose(cart)},
          `${cart.cart}: ${[cart.title, cart.artist].filter(Boolean).join(' – ')}`)));
    } catch (problem) {
      lines = [element('li', {}, mark('failing', problem.message))];
    }
    if (mine === asked) found.replaceChildren(...lines);
    return undefined;
  };
  const input = field('Search the carts', 'search', {type: 'search', oninput: (event) => {
    clearTimeout(timer);
    timer = setTimeout(() => search(event.target.value.trim()), pause);
  }});
  return element('div', {class: 'wide'}, input, found);
}

// A form whose button posts what was typed in.
function makeForm(tell, path, done, fields, button) {
  const form = element('form', {class: 'entry', onsubmit: (event) => {
    event.preventDefault();
    tell(path, Object.fromEntries(new FormData(form)), done);
  }}, ...fields, element('p', {class: 'buttons'}, element('button', {type: 'submit'}, button)));
  return form;
}

function itemForm(number, tell) {
  const form = element('form', {class: 'entry', onsubmit: (event) => {
    event.preventDefault();
    const {slot, search, ...item} = Object.fromEntries(new FormData(form));
    tell(`items/${slot}`, item, 'Set');
  }},
    cartSearch(number, (cart) => {
      for (const name of ['title', 'artist', 'cart']) form.elements[name].value = cart[name];
      form.elements.title.focus();
    }),
    choice('Set the item', 'slot', slots), field('Title', 'title'), field('Artist', 'artist'),
    choice('Type', 'type', types), field('Cart number', 'cart', {inputmode: 'numeric', pattern: '[0-9]*'}),
    field('Notes', 'notes'),
    element('p', {class: 'buttons'}, element('button', {type: 'submit'}, 'Set')));
  return form;
}

export function makeEntry(number) {
  const answer = element('p', {role: 'status', class: 'answer'});
  const tell = async (path, body, done) => {
    try {
      await act(`/api/v1/services/${number}/${path}`, body);
      fill(answer, mark('ok', `${done} at ${new Date().toLocaleTimeString()}`));
    } catch (problem) {
      fill(answer, mark('failing', problem.message));
    }
  };
  const at = (path, body, done, caption) =>
    element('button', {type: 'button', onclick: () => tell(path, body, done)}, caption);
  return element('section', {'aria-label': 'By hand'}, element('h3', {}, 'By hand'),
    element('p', {class: 'buttons'}, at('update', {}, 'Update begun', 'Update all outputs now'),
      at('promote', {from: 'next'}, 'On air', 'Put the next item on air'),
      at('promote', {from: 'coming'}, 'On air', 'Put what is coming soon on air')),
    answer, itemForm(number, tell),
    makeForm(tell, 'presenter', 'Presenter set', [field('Presenter', 'name'), field('Reference', 'reference')],
      'Set presenter'),
    makeForm(tell, 'show', 'Show set', [field('Show', 'title'), field('Reference', 'reference')], 'Set show'));
}
