// Tries a template against what is on now.

import {act} from './api.js';
import {element} from './dom.js';

const pause = 300;  // ms without a key before a preview is asked for

export function makePlayground(number) {
  const result = element('pre', {'aria-live': 'polite'});
  let timer;
  const preview = async (template) => {
    try {
      const answer = await act(`/api/v1/services/${number}/preview`, {template});
      result.textContent = answer.text;
    } catch (problem) {
      result.textContent = problem.message;
    }
  };
  const text = element('textarea', {rows: 4, spellcheck: 'false', oninput: () => {
    clearTimeout(timer);
    timer = setTimeout(() => preview(text.value), pause);
  }});
  return element('section', {class: 'playground'}, element('h3', {}, 'Try a template'),
    element('label', {}, 'Template', text), element('div', {class: 'output'}, element('div', {class: 'wide'}, result)));
}
