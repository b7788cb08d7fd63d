// The editing script: runs in a world of its own beside the document, whose own scripts never run.
// Timers do not fire here while those are off; listeners, observers and the channel do.
(function () {
  'use strict';
  if (window.quill) return;
  let bridge = null;
  let edits = 0;  // of all documents
  const quill = window.quill = {};

  let isReadOnly = false;
  // A document may have places that can be typed into by themselves, and boxes.
  document.addEventListener('beforeinput', event => { if (isReadOnly) event.preventDefault(); }, true);
  quill.setReadOnly = readOnly => {
    isReadOnly = readOnly;
    document.designMode = readOnly ? 'off' : 'on';
    if (readOnly) return;
    document.execCommand('styleWithCSS', false, 'false');
    document.execCommand('defaultParagraphSeparator', false, 'p');
  };

  const elementAtCaret = () => {
    const selection = document.getSelection();
    if (!selection || !selection.rangeCount) return document.body;
    const node = selection.getRangeAt(0).startContainer;
    return node.nodeType === Node.ELEMENT_NODE ? node : node.parentElement;
  };
  const linkAtCaret = () => {
    const element = elementAtCaret();
    return element && element.closest('a[href]');
  };
  const ensureSelection = () => {
    const selection = document.getSelection();
    if (selection.rangeCount && document.body.contains(selection.anchorNode)) return;
    selection.selectAllChildren(document.body);
    selection.collapseToEnd();
  };

  // The engine takes a caret that was placed before the page could be seen, or had the keys, for none until it is placed
  // anew by the first key. What was switched on or off for the letters to come is then set anew, too.
  let isAsleep = true;
  const placeCaret = (node, offset) => {
    isAsleep = true;
    const selection = document.getSelection();
    selection.removeAllRanges();
    selection.collapse(node, offset);
  };
  const placeFirst = () => {
    if (!document.body) return;
    const first = document.body.firstElementChild;
    placeCaret(first && /^(P|DIV|H[1-6])$/.test(first.tagName) ? first : document.body, 0);
  };
  const kLetterStyles = ['bold', 'italic', 'underline', 'strikeThrough', 'fontName', 'fontSize', 'foreColor'];
  const letterStyle = name => document.queryCommandValue(name);
  const placeAnew = () => {
    const selection = document.getSelection();
    if (!selection.rangeCount || !selection.isCollapsed) return;
    const styles = kLetterStyles.map(letterStyle);
    const wasAsleep = isAsleep;
    placeCaret(selection.anchorNode, selection.anchorOffset);
    isAsleep = wasAsleep;
    kLetterStyles.forEach((name, at) => {
      if (letterStyle(name) !== styles[at]) document.execCommand(name, false, styles[at]);
    });
  };
  const wakeCaret = () => {
    if (!isAsleep || !document.hasFocus()) return;
    placeAnew();
    isAsleep = false;
  };
  // Where the caret is: the numbers of the children on the way down from the body, and the place in the last of them.
  const wayToCaret = () => {
    const selection = document.getSelection();
    if (!selection.rangeCount || !document.body || !document.body.contains(selection.anchorNode)) return [];
    const way = [selection.anchorOffset];
    for (let node = selection.anchorNode; node !== document.body; node = node.parentNode) {
      way.unshift(Array.prototype.indexOf.call(node.parentNode.childNodes, node));
    }
    return way;
  };
  // At the end where the way leads nowhere.
  quill.goTo = way => {
    let node = way.length ? document.body : null;
    for (const number of way.slice(0, -1)) node = node && node.childNodes[number];
    const isThere = Boolean(node);
    if (!isThere) for (node = document.body; node.lastChild;) node = node.lastChild;
    const end = node.nodeType === Node.TEXT_NODE ? node.length : node.childNodes.length;
    placeCaret(node, isThere ? Math.min(way[way.length - 1], end) : end);
  };
  quill.edits = () => edits;
  // What would not be read back as it is: the list commands leave a list in its paragraph, which every parser takes apart
  // into empty ones around it; and a line end that begins one of these elements is not written twice, as it has to be.
  const kLoneList = 'p > ul:only-child, p > ol:only-child';
  const kLineEndGoes = 'pre, textarea, listing';
  const beginsWithLineEnd = element => element.firstChild && /^\n/.test(element.firstChild.data);
  const readable = root => {  // the element itself, or a copy in which that is mended
    const blocks = Array.from(root.querySelectorAll(kLineEndGoes));
    if (!root.querySelector(kLoneList) && !blocks.some(beginsWithLineEnd)) return root;
    const copy = root.cloneNode(true);
    copy.querySelectorAll(kLoneList).forEach(list => {
      if (list.parentNode.childNodes.length === 1) list.parentNode.replaceWith(list);
    });
    copy.querySelectorAll(kLineEndGoes).forEach(element => {
      if (beginsWithLineEnd(element)) element.prepend('\n');
    });
    return copy;
  };
  quill.body = () => ({
    edits,
    attributes: Array.from(document.body.attributes, a => [a.name, a.value]),
    inner: readable(document.body).innerHTML,
  });
  quill.whole = () => {
    const copy = document.documentElement.cloneNode(true);
    copy.querySelector('quill-marks').remove();
    return { edits, html: readable(copy).outerHTML };
  };
  quill.text = () => document.body.innerText;
  // Without a selection the engine takes no link away.
  const selectLink = () => {
    const link = linkAtCaret();
    if (link && document.getSelection().isCollapsed) document.getSelection().selectAllChildren(link);
  };
  quill.exec = (name, value) => {
    ensureSelection();
    if (name === 'unlink') selectLink();
    return document.execCommand(name, false, value);
  };
  // What was put in is to be seen: the engine brings the caret into view for what is typed alone.
  const showCaret = done => {
    const kAround = 16;  // pixels
    const range = document.getSelection().rangeCount && document.getSelection().getRangeAt(0);
    if (!done || !range) return done;
    const within = range.startContainer.childNodes;
    const near = within[range.startOffset - 1] || within[range.startOffset] || range.startContainer;
    const element = near.nodeType === Node.ELEMENT_NODE ? near : near.parentElement;
    const box = range.getClientRects()[0] || element.getBoundingClientRect();
    if (box.bottom > window.innerHeight) window.scrollBy(0, box.bottom - window.innerHeight + kAround);
    else if (box.top < 0) window.scrollBy(0, box.top - kAround);
    return done;
  };
  // Words alone, such as a merge tag, are as what is typed: in the style that is switched on for the letters to come.
  // They are a step of their own for the engine's Undo, unlike letters, where the caret was placed anew.
  quill.insert = html => {
    ensureSelection();
    if (!html || /[<&\n]/.test(html)) return showCaret(document.execCommand('insertHTML', false, html));
    placeAnew();
    return showCaret(document.execCommand('insertText', false, html));
  };
  quill.state = () => {
    const on = name => document.queryCommandState(name);
    const link = linkAtCaret();
    return {
      bold: on('bold'), italic: on('italic'), underline: on('underline'),
      bullets: on('insertUnorderedList'), numbers: on('insertOrderedList'),
      left: on('justifyLeft'), center: on('justifyCenter'), right: on('justifyRight'),
      font: document.queryCommandValue('fontName'), size: document.queryCommandValue('fontSize'),
      color: document.queryCommandValue('foreColor'),
      inTable: quill.inTable(), caret: wayToCaret(), block: document.queryCommandValue('formatBlock'),
      strike: on('strikeThrough'), picture: quill.picture(), room: quill.room(),
      canUndo: document.queryCommandEnabled('undo'), canRedo: document.queryCommandEnabled('redo'),
      link: link ? link.getAttribute('href') : '', linkText: link ? link.textContent : '',
      selected: String(document.getSelection()),
    };
  };
  // What a link within the message can lead to: what has a name, and each heading, under a name made of its words until
  // a link leads there. Mail programs find an old anchor where they take the names of other elements away.
  quill.places = () => {
    const taken = new Set();
    const places = [];
    document.querySelectorAll('[id],a[name]').forEach(element => {
      const name = element.id || element.name;
      if (!name || taken.has(name)) return;
      taken.add(name);
      places.push({ name, text: element.textContent.trim().slice(0, 80), element });
    });
    document.querySelectorAll('h1,h2,h3,h4,h5,h6').forEach(element => {
      const text = element.textContent.trim().slice(0, 80);
      if (!text || element.id || element.querySelector('a[name]')) return;
      const made = text.toLowerCase().replace(/[^\p{L}\p{N}]+/gu, '-').replace(/^-|-$/g, '') || 'heading';
      let name = made;
      for (let number = 2; taken.has(name); ++number) name = `${made}-${number}`;
      taken.add(name);
      places.push({ name, text, element, isNew: true });
    });
    return places;
  };
  // No step of its own for the engine's Undo: nobody sees the name.
  const namePlace = name => {
    const place = quill.places().find(candidate => candidate.isNew && candidate.name === name);
    if (place) place.element.id = name;
  };
  // With text selected, it becomes the link; with the caret in a link, that one changes; else the address is inserted.
  // A text that is given stands in place of what was there.
  quill.link = (address, text) => {
    ensureSelection();
    if (address.startsWith('#')) namePlace(address.slice(1));
    const selection = document.getSelection();
    const link = linkAtCaret();
    if (selection.isCollapsed && link) {
      const range = document.createRange();
      if (text) range.selectNode(link); else range.selectNodeContents(link);
      selection.removeAllRanges();
      selection.addRange(range);
    }
    if (!selection.isCollapsed && !text) return document.execCommand('createLink', false, address);
    const anchor = document.createElement('a');
    anchor.setAttribute('href', address);
    anchor.textContent = text || address;
    return showCaret(document.execCommand('insertHTML', false, anchor.outerHTML));
  };

  // What a word processor or a page puts round its text goes; what a letter is made of stays.
  const kKept = new Set(['P', 'BR', 'B', 'STRONG', 'I', 'EM', 'U', 'S', 'STRIKE', 'A', 'UL', 'OL', 'LI', 'H1', 'H2', 'H3',
    'H4', 'H5', 'H6', 'BLOCKQUOTE', 'PRE', 'CODE', 'TABLE', 'THEAD', 'TBODY', 'TFOOT', 'TR', 'TD', 'TH', 'IMG', 'HR',
    'SUB', 'SUP', 'FONT', 'DIV', 'SPAN', 'CENTER', 'CAPTION']);
  const kDropped = 'script,style,meta,link,title,head,xml,object,embed,iframe,frame,input,button,select,textarea,svg,base';
  const kAttributes = new Set(['href', 'src', 'alt', 'width', 'height', 'align', 'border', 'cellpadding', 'cellspacing',
    'colspan', 'rowspan', 'color', 'face', 'size', 'start', 'type', 'dir', 'bgcolor', 'valign']);
  const kLinks = /^\s*(https?|mailto|ftp|tel|\$\*Merge)/i;
  const kOwnPictures = /^\s*(data:image|\$\*Merge)/i;
  const unwrap = element => element.replaceWith(...element.childNodes);
  // `allowed` are the addresses of files whose pictures may stay. Gives how many pictures did not.
  const cleanTree = (parsed, allowed) => {
    parsed.querySelectorAll(kDropped).forEach(element => element.remove());
    const comments = parsed.createNodeIterator(parsed.body, NodeFilter.SHOW_COMMENT);
    for (let comment; (comment = comments.nextNode());) comment.remove();
    Array.from(parsed.body.querySelectorAll('*')).reverse().forEach(element => {
      const style = element.style;
      const weight = style && (style.fontWeight === 'bold' || Number(style.fontWeight) >= 600);
      const slanted = style && style.fontStyle === 'italic';
      Array.from(element.attributes).forEach(a => {
        const stays = a.name === 'href' ? kLinks.test(a.value) :
          a.name === 'src' ? kOwnPictures.test(a.value) || allowed.includes(a.value) : kAttributes.has(a.name);
        if (!stays) element.removeAttribute(a.name);
      });
      if (element.tagName === 'SPAN' || !kKept.has(element.tagName)) {
        if (weight) element.innerHTML = '<b>' + element.innerHTML + '</b>';
        if (slanted) element.innerHTML = '<i>' + element.innerHTML + '</i>';
        unwrap(element);
      }
    });
    const dropped = parsed.body.querySelectorAll('img:not([src])');
    dropped.forEach(picture => picture.replaceWith(picture.alt));
    return dropped.length;
  };
  quill.clean = (html, allowed = []) => {
    const parsed = new DOMParser().parseFromString(html, 'text/html');
    cleanTree(parsed, allowed);
    return parsed.body.innerHTML.trim();
  };
  // What comes from elsewhere, pasted or dropped. Which files it may name, the program decides.
  const insertForeign = html => {
    const parsed = new DOMParser().parseFromString(html, 'text/html');
    const put = allowed => {
      const dropped = cleanTree(parsed, allowed);
      quill.insert(parsed.body.innerHTML.trim());
      if (dropped && bridge) bridge.picturesDropped();
    };
    const files = Array.from(parsed.querySelectorAll('img[src]'), picture => picture.getAttribute('src'))
      .filter(address => /^\s*file:/i.test(address));
    if (files.length && bridge) bridge.allowedPictures(files, put); else put([]);
  };
  const kParagraphs = 'p,li,dt,dd,td,th,caption,h1,h2,h3,h4,h5,h6,pre,blockquote,address,div';
  const isBlock = node =>
    node.nodeType === Node.ELEMENT_NODE && !/^(inline|contents|none)/.test(getComputedStyle(node).display);
  // Whether a range that begins in text without a paragraph was brought back to the block that follows in the same one.
  const endedBeforeBlock = range => {
    let node = range.startContainer;
    while (node.parentNode !== document.body && !isBlock(node.parentNode)) node = node.parentNode;
    let last = node;
    while ((node = node.nextSibling) && !isBlock(node)) last = node;
    if (!node || range.comparePoint(node, 0) > 0) return false;
    while (last.lastChild) last = last.lastChild;  // what is typed would join a place between the two to the block
    if (last.nodeType === Node.TEXT_NODE) range.setEnd(last, last.length); else range.setEndBefore(node);
    return true;
  };
  // Whether a range was brought back to the end of the paragraph, or of the line, that it begins in.
  const shortened = range => {
    const ended = range.startContainer.nodeType === Node.TEXT_NODE && endedBeforeBlock(range);
    const paragraph = elementAtCaret().closest(kParagraphs);
    if (paragraph && !paragraph.contains(range.endContainer)) {
      range.setEnd(paragraph, paragraph.childNodes.length);
      return true;
    }
    const last = range.endContainer.childNodes[range.endOffset - 1];
    if (last && last.tagName === 'BR') {
      range.setEndBefore(last);
      return true;
    }
    const before = range.endOffset === 0 && range.endContainer.previousSibling;
    if (!before || before.tagName !== 'BR' || range.comparePoint(before, 0) < 0) return ended;
    range.setEndBefore(before);
    return true;
  };
  // Three clicks select up to the beginning of what follows the paragraph, which what is typed would join to this one.
  const endWithinParagraph = () => {
    const selection = document.getSelection();
    if (!selection.rangeCount) return;
    const range = selection.getRangeAt(0).cloneRange();
    if (range.collapsed || !shortened(range)) return;
    selection.removeAllRanges();
    selection.addRange(range);
  };
  document.addEventListener('mouseup', event => { if (event.detail >= 3) endWithinParagraph(); });
  document.addEventListener('keydown', wakeCaret, true);
  document.addEventListener('paste', event => {
    const data = event.clipboardData;
    const html = data && data.getData('text/html');
    if (html) {
      event.preventDefault();
      insertForeign(html);
    } else if (data && !data.getData('text/plain') && data.files.length && bridge) {
      event.preventDefault();
      bridge.picturePasted();
    }
  });

  // What is dragged within the document moves as it is. No mouse moves while something is dragged.
  let dragsOwn = false;
  document.addEventListener('dragstart', () => { dragsOwn = true; });
  ['dragend', 'mousemove'].forEach(name => document.addEventListener(name, () => { dragsOwn = false; }));
  document.addEventListener('drop', event => {
    const html = !dragsOwn && event.dataTransfer && event.dataTransfer.getData('text/html');
    if (!html) return;
    event.preventDefault();
    const place = document.caretRangeFromPoint(event.clientX, event.clientY);
    if (place) {
      document.getSelection().removeAllRanges();
      document.getSelection().addRange(place);
    }
    insertForeign(html);
  });

  // Marks the merge tags without a change to the document: boxes that lie over it, beside the body, in a tree of their
  // own. A tag that is none is marked in red.
  const kLongestMarked = 1000000;  // characters
  let known = new Set();
  let layer = null;
  quill.tell = notice => { if (bridge) bridge[notice](); };
  const makeLayer = () => {
    const host = document.createElement('quill-marks');
    const shadow = host.attachShadow({ mode: 'closed' });
    const style = document.createElement('style');
    style.textContent = ':host{position:absolute;left:0;top:0;pointer-events:none;user-select:none}' +
      'i{position:absolute;background:#ffd75e;mix-blend-mode:multiply;border-radius:3px;outline:1px solid #e0a800}' +
      'i.unknown{background:#ffb3ab;outline-color:#d33a2c}@media print{:host{display:none}}';
    layer = document.createElement('div');
    shadow.append(style, layer);
    quill.makeHandles(shadow);
    document.documentElement.append(host);
  };
  quill.setTags = tags => { known = new Set(tags); quill.mark(); };
  quill.mark = () => {
    if (!layer || !document.body) return;
    layer.replaceChildren();
    if (document.body.textContent.length > kLongestMarked) return;
    const texts = document.createNodeIterator(document.body, NodeFilter.SHOW_TEXT);
    const range = document.createRange();
    for (let text; (text = texts.nextNode());) {
      for (const tag of text.data.matchAll(/\$\*Merge\w*\*\$/g)) {
        range.setStart(text, tag.index);
        range.setEnd(text, tag.index + tag[0].length);
        for (const box of range.getClientRects()) {
          const mark = document.createElement('i');
          if (!known.has(tag[0])) mark.className = 'unknown';
          mark.style.cssText =
            `left:${box.x + scrollX}px;top:${box.y + scrollY}px;width:${box.width}px;height:${box.height}px`;
          layer.append(mark);
        }
      }
    }
  };
  quill.marks = () => Array.from(layer.children, mark => mark.className || 'known');
  window.addEventListener('resize', () => quill.mark());
  document.addEventListener('load', () => quill.mark(), true);  // a picture has come and moved the text

  const notice = () => {
    ++edits;
    if (bridge) bridge.changed(edits);
  };
  const observer = new MutationObserver(notice);
  const observe = () =>
    observer.observe(document, { subtree: true, childList: true, characterData: true, attributes: true });
  // Asks for them anew, for other ones may be shown now. No change to the document.
  quill.reloadPictures = () => {
    if (observer.takeRecords().length) notice();
    observer.disconnect();
    document.querySelectorAll('img[src]').forEach(picture => { picture.src = picture.getAttribute('src'); });
    observe();
  };
  // Nothing that a parsed document holds is run. Gives the number of the last edit before it.
  quill.load = source => {
    observer.disconnect();
    const parsed = new DOMParser().parseFromString(source, 'text/html');
    document.replaceChild(document.adoptNode(parsed.documentElement), document.documentElement);
    scrollTo(0, 0);
    placeFirst();
    makeLayer();
    quill.mark();
    observe();
    return edits;
  };

  quill.setReadOnly(false);
  document.addEventListener('selectionchange', () => { if (bridge) bridge.selectionMoved(); });
  new QWebChannel(qt.webChannelTransport, channel => { bridge = channel.objects.bridge; });
})();
