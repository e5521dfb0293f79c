// Talking with the publisher: requests, the log-on that some of them need, and the stream of events.

const login = document.getElementById('login');

async function refusal(answer) {
  try {
    return (await answer.json()).error ?? answer.statusText;
  } catch {
    return `${answer.status} ${answer.statusText}`;
  }
}

// What fetch says itself when nobody answers helps no one.
async function ask(path, options) {
  try {
    return await fetch(path, options);
  } catch {
    throw new Error('The publisher does not answer');
  }
}

async function post(path, body) {
  return ask(path, {
    method: 'POST',
    headers: {'Content-Type': 'application/json'},
    body: JSON.stringify(body ?? {}),
  });
}

export async function get(path) {
  const answer = await ask(path);
  if (!answer.ok) throw new Error(await refusal(answer));
  return answer.json();
}

// {loggedOn, mayRead, mayAct, passwordSet}
export async function session() {
  try {
    return await get('/api/v1/session');
  } catch {
    return {loggedOn: false, mayRead: true, mayAct: false, passwordSet: true};
  }
}

function sessionChanged() {
  dispatchEvent(new Event('session'));
}

// Does something; asks for the password first when that is what is missing.
export async function act(path, body) {
  let answer = await post(path, body);
  if (answer.status === 401) {
    const why = await refusal(answer);
    if (!(await session()).passwordSet) throw new Error(why);
    if (!(await logIn('This changes what is on air, so it needs the password.'))) throw new Error('Not logged in');
    answer = await post(path, body);
  }
  if (!answer.ok) throw new Error(await refusal(answer));
  return answer.status === 204 ? undefined : answer.json();
}

export async function logOut() {
  await post('/logout');
  sessionChanged();
}

// True once the publisher has taken the password.
export function logIn(why = '') {
  const form = login.querySelector('form');
  const problem = document.getElementById('login-problem');
  document.getElementById('login-why').textContent = why;
  problem.textContent = '';
  form.reset();
  login.showModal();
  return new Promise((resolve) => {
    let taken = false;
    form.onsubmit = async (event) => {
      event.preventDefault();
      try {
        const answer = await post('/login', {password: form.password.value});
        taken = answer.ok;
        problem.textContent = taken ? '' : await refusal(answer);
      } catch (fault) {
        problem.textContent = fault.message;
      }
      if (!taken) return form.password.select();
      sessionChanged();
      return login.close();
    };
    form.querySelector('[value=cancel]').onclick = () => login.close();
    login.onclose = () => resolve(taken);
  });
}

// Events as they come. The browser connects again by itself; `onLink` is told whether what is shown is live.
// The publisher sends something at least every 10 s, so silence means that the connection is dead.
const silence = 30000;
const again = 2000;

export function listen(onEvent, onLink) {
  let source;
  let lastHeard = Date.now();
  let lastTried = lastHeard;
  const heard = (name) => (event) => {
    lastHeard = Date.now();
    onLink(true);
    onEvent(name, JSON.parse(event.data));
  };
  const connect = () => {
    source?.close();
    lastTried = Date.now();
    source = new EventSource('/api/v1/events');
    for (const name of ['services', 'service', 'note', 'alive']) source.addEventListener(name, heard(name));
    source.onerror = () => {
      onLink(false, lastHeard);
      if (source.readyState === EventSource.CLOSED) setTimeout(connect, again);
    };
  };
  connect();
  setInterval(() => {
    if (Date.now() - Math.max(lastHeard, lastTried) < silence) return;
    onLink(false, lastHeard);
    connect();
  }, 5000);
}
