// Tries a template against what is on now.

import {act} from './api.js';
import {element, fill} from './dom.js';

const pause = 300;  // ms without a key before a preview is asked for

export function makePlayground(number) {
  const result = element('pre', {role: 'status', 'aria-label': 'Result', tabindex: 0});
  let timer;
  let asked = 0;
  const preview = async (template) => {
    const mine = ++asked;
    let text;
    try {
      text = (await act(`/api/v1/services/${number}/preview`, {template})).text;
    } catch (problem) {
      text = problem.message;
    }
    if (mine === asked) fill(result, text);
  };
  const text = element('textarea', {rows: 4, spellcheck: 'false', oninput: () => {
    clearTimeout(timer);
    timer = setTimeout(() => preview(text.value), pause);
  }});
  return element('section', {class: 'playground', 'aria-label': 'Try a template'},
    element('h3', {}, 'Try a template'),
    element('label', {}, 'Template', text), result);
}
