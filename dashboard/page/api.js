// Talking with the publisher: requests, the log-on that some of them need, and the stream of events.

const login = document.getElementById('login');

async function refusal(answer) {
  try {
    return (await answer.json()).error ?? answer.statusText;
  } catch {
    return `${answer.status} ${answer.statusText}`;
  }
}

async function post(path, body) {
  return fetch(path, {
    method: 'POST',
    headers: {'Content-Type': 'application/json'},
    body: JSON.stringify(body ?? {}),
  });
}

export async function get(path) {
  const answer = await fetch(path);
  if (!answer.ok) throw new Error(await refusal(answer));
  return answer.json();
}

// Does something; asks for the password first when that is what is missing.
export async function act(path, body) {
  let answer = await post(path, body);
  if (answer.status === 401) {
    if (!(await logIn('This changes what is on air, so it needs the password.'))) throw new Error('Not logged in');
    answer = await post(path, body);
  }
  if (!answer.ok) throw new Error(await refusal(answer));
  return answer.status === 204 ? undefined : answer.json();
}

export async function logOut() {
  await post('/logout');
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
      const answer = await post('/login', {password: form.password.value});
      taken = answer.ok;
      if (taken) return login.close();
      problem.textContent = await refusal(answer);
      form.password.select();
    };
    form.querySelector('[value=cancel]').onclick = () => login.close();
    login.onclose = () => resolve(taken);
  });
}

// Events as they come. The browser connects again by itself; `onLink` is told whether what is shown is live.
// The publisher sends something at least every 15 s, so silence means that the connection is dead.
export function listen(onEvent, onLink) {
  let source;
  let lastHeard = Date.now();
  const heard = (name) => (event) => {
    lastHeard = Date.now();
    onLink(true);
    onEvent(name, JSON.parse(event.data));
  };
  const connect = () => {
    source?.close();
    source = new EventSource('/api/v1/events');
    for (const name of ['services', 'service', 'note', 'alive']) source.addEventListener(name, heard(name));
    source.onerror = () => {
      onLink(false, lastHeard);
      if (source.readyState === EventSource.CLOSED) setTimeout(connect, 2000);
    };
  };
  connect();
  setInterval(() => {
    if (Date.now() - lastHeard < 30000) return;
    onLink(false, lastHeard);
    lastHeard = Date.now() - 20000;
    connect();
  }, 5000);
}
