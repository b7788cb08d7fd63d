// The attributes of the body, which the engine's commands do not reach: they are changed here, and Undo and Redo take
// them in turn with the engine's own steps.
(function () {
  'use strict';
  const quill = window.quill;
  if (!quill || quill.takeBody) return;
  // What each change can be taken back to or done again: the attributes of before or after, and the text that stood
  // there with it. Where that text stands again, the engine has nothing of what came behind it left to take back.
  let undone = [];
  let done = [];
  const attributes = body => Array.from(body.attributes, a => [a.name, a.value]);
  const put = wanted => {
    const body = document.body;
    const names = new Set(wanted.map(([name]) => name));
    attributes(body).forEach(([name]) => { if (!names.has(name)) body.removeAttribute(name); });
    wanted.forEach(([name, value]) => { if (body.getAttribute(name) !== value) body.setAttribute(name, value); });
  };
  const step = (from, to) => {
    const last = from[from.length - 1];
    if (!last || last.text !== document.body.innerHTML) return false;
    from.pop();
    to.push({ attributes: attributes(document.body), text: last.text });
    put(last.attributes);
    return true;
  };

  // The body takes over the attributes that the body of `source` has, and loses others.
  quill.takeBody = source => {
    const wanted = attributes(new DOMParser().parseFromString(source, 'text/html').body);
    if (JSON.stringify(wanted) === JSON.stringify(attributes(document.body))) return false;
    done.push({ attributes: attributes(document.body), text: document.body.innerHTML });
    undone = [];
    put(wanted);
    return true;
  };
  const exec = quill.exec;
  quill.exec = (name, value) =>
    (name === 'undo' && step(done, undone)) || (name === 'redo' && step(undone, done)) || exec(name, value);
  const state = quill.state;
  quill.state = () => {
    const now = state();
    return { ...now, canUndo: now.canUndo || done.length > 0, canRedo: now.canRedo || undone.length > 0 };
  };
  const load = quill.load;
  quill.load = source => {
    done = [];
    undone = [];
    return load(source);
  };
  // What is typed takes the way back to what was undone.
  document.addEventListener('input', event => { if (!/^history/.test(event.inputType || '')) undone = []; });
})();
