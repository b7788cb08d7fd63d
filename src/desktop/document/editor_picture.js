// A picture that is selected has handles: boxes that lie over it, beside the body, as the marks of the tags do. While one
// is dragged only the frame moves; its end replaces the picture as a whole, so that one step back undoes it.
(function () {
  'use strict';
  const quill = window.quill;
  if (!quill || quill.picture) return;
  const kSmallest = 8;  // pixels
  // Which sides each handle moves, from the middle of the picture.
  const kHandles = [[-1, -1], [0, -1], [1, -1], [-1, 0], [1, 0], [-1, 1], [0, 1], [1, 1]];
  let frame = null;  // the box with the handles in it
  let drag = null;   // { picture, x, y, across, down, width, height } from the press to the release

  // The picture, where it alone is selected, or a link that holds nothing else. A look at more would take its time in a
  // long document.
  const selected = () => {
    const selection = document.getSelection();
    if (!selection.rangeCount) return null;
    const range = selection.getRangeAt(0), parent = range.startContainer;
    if (parent !== range.endContainer || range.endOffset - range.startOffset !== 1) return null;
    const node = parent.childNodes[range.startOffset];
    if (!node) return null;
    if (node.tagName === 'A' && node.childNodes.length === 1 && node.firstChild.tagName === 'IMG') return node.firstChild;
    return node.tagName === 'IMG' ? node : null;
  };
  const select = picture => {
    const range = document.createRange(), selection = document.getSelection();
    range.selectNode(picture);
    selection.removeAllRanges();
    selection.addRange(range);
  };

  const place = size => {
    const picture = drag ? drag.picture : document.designMode === 'on' && selected();
    frame.hidden = !picture;
    if (!picture) return;
    const box = picture.getBoundingClientRect();
    frame.style.left = `${box.x + scrollX}px`;
    frame.style.top = `${box.y + scrollY}px`;
    frame.style.width = `${size ? size.width : box.width}px`;
    frame.style.height = `${size ? size.height : box.height}px`;
  };
  // Whenever a document came: the tree that the marks are in came with it.
  quill.makeHandles = shadow => {
    const style = document.createElement('style');
    style.textContent = '.frame{position:absolute;box-sizing:border-box;outline:2px solid #1f6fd0}' +
      '.frame[hidden]{display:none}.frame b{position:absolute;width:9px;height:9px;margin:-6px;background:#fff;' +
      'border:2px solid #1f6fd0;pointer-events:auto}';
    frame = document.createElement('div');
    frame.className = 'frame';
    frame.hidden = true;
    kHandles.forEach(([across, down]) => {
      const handle = document.createElement('b');
      const cursor = across === 0 ? 'ns' : down === 0 ? 'ew' : across === down ? 'nwse' : 'nesw';
      handle.style.cssText = `left:${(across + 1) * 50}%;top:${(down + 1) * 50}%;cursor:${cursor}-resize`;
      handle.addEventListener('mousedown', event => begin(event, across, down));
      frame.append(handle);
    });
    shadow.append(style, frame);
  };

  const sizeAt = event => {
    let width = drag.width + (event.clientX - drag.x) * drag.across;
    let height = drag.height + (event.clientY - drag.y) * drag.down;
    if (drag.across && drag.down) {  // a corner keeps the ratio, by the side that was moved farther
      const scale = Math.max(width / drag.width, height / drag.height, kSmallest / Math.min(drag.width, drag.height));
      width = drag.width * scale;
      height = drag.height * scale;
    }
    return { width: Math.max(kSmallest, Math.round(width)), height: Math.max(kSmallest, Math.round(height)) };
  };
  const begin = (event, across, down) => {
    const picture = selected();
    if (event.button !== 0 || !picture) return;
    event.preventDefault();
    event.stopPropagation();
    const box = picture.getBoundingClientRect();
    drag = { picture, x: event.clientX, y: event.clientY, across, down, width: box.width, height: box.height };
  };
  const end = event => {
    const { picture, across, down, width, height } = drag;
    const size = sizeAt(event);
    drag = null;
    if (size.width !== Math.round(width) || size.height !== Math.round(height)) {
      const keeps = across && down;
      change(picture, copy => {
        copy.setAttribute('width', size.width);
        copy.setAttribute('height', size.height);
        // What a style says of a side would have the last word.
        ['width', 'height'].forEach(side => {
          if (copy.style[side] && !(keeps && copy.style[side] === 'auto')) copy.style[side] = '';
        });
        if (copy.getAttribute('style') === '') copy.removeAttribute('style');
      });
    }
    place();
  };
  document.addEventListener('mousemove', event => { if (drag) place(sizeAt(event)); }, true);
  document.addEventListener('mouseup', event => { if (drag) end(event); }, true);
  document.addEventListener('keydown', event => {
    if (!drag || event.key !== 'Escape') return;
    drag = null;
    event.preventDefault();
    place();
  }, true);

  // Puts a changed copy in its place; where the picture is all of its link, with that.
  const change = (picture, alter) => {
    const link = picture.closest('a');
    const whole = link && link.childNodes.length === 1 && link.firstChild === picture ? link : picture;
    const number = Array.from(document.images).indexOf(picture);
    const copy = whole.cloneNode(true);
    alter(copy.tagName === 'IMG' ? copy : copy.firstChild);
    select(whole);
    if (!document.execCommand('insertHTML', false, copy.outerHTML)) return false;
    if (document.images[number]) select(document.images[number]);
    return true;
  };

  // What the program wants to know of the picture that is selected.
  quill.picture = () => {
    const picture = selected();
    if (!picture) return {};
    const of = name => picture.getAttribute(name) || '';
    // One that does not show has the size of its alternative text.
    const side = name => picture.naturalWidth ? picture[name] : of(name);
    return {
      address: picture.src, alternative: of('alt'), border: of('border'), align: of('align'),
      width: side('width'), height: side('height'),
      naturalWidth: picture.naturalWidth, naturalHeight: picture.naturalHeight,
    };
  };
  // Of the place where the caret is, in pixels.
  quill.room = () => {
    const selection = document.getSelection();
    const node = selection.rangeCount ? selection.getRangeAt(0).startContainer : document.body;
    const element = node.nodeType === Node.ELEMENT_NODE ? node : node.parentElement;
    const block = element && (element.closest('td,th,p,div,li,blockquote,h1,h2,h3,h4,h5,h6') || document.body);
    if (!block) return 0;
    const style = getComputedStyle(block);
    return Math.floor(block.clientWidth - parseFloat(style.paddingLeft) - parseFloat(style.paddingRight));
  };
  // The attributes of a picture that the program made come to the one that is selected.
  quill.changePicture = html => {
    const picture = selected();
    const made = new DOMParser().parseFromString(html, 'text/html').querySelector('img');
    if (!picture || !made) return false;
    return change(picture, copy => {
      ['alt', 'width', 'height', 'border', 'align'].forEach(name => {
        if (made.hasAttribute(name)) copy.setAttribute(name, made.getAttribute(name));
        else copy.removeAttribute(name);
      });
      if (made.src !== copy.src) copy.setAttribute('src', made.getAttribute('src'));
      copy.style.width = '';
      copy.style.height = made.style.height;
      copy.style.maxWidth = made.style.maxWidth;
    });
  };

  document.addEventListener('selectionchange', () => { if (frame && !drag) place(); });
  document.addEventListener('load', () => { if (frame && !drag) place(); }, true);
  window.addEventListener('resize', () => { if (frame) place(); });
  ['click', 'contextmenu'].forEach(name => document.addEventListener(name, event => {
    if (event.target.tagName === 'IMG' && document.designMode === 'on') select(event.target);
  }, true));
  document.addEventListener('dblclick', event => {
    if (event.target.tagName !== 'IMG' || document.designMode !== 'on') return;
    select(event.target);
    quill.tell('openPicture');
  }, true);
})();
