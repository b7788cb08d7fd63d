// Rows and columns of the table that the caret is in. Each change replaces the table as a whole, so that one step back
// undoes it.
(function () {
  'use strict';
  const quill = window.quill;
  if (!quill || quill.editTable) return;

  const cellAtCaret = () => {
    const selection = document.getSelection();
    const node = selection.rangeCount ? selection.getRangeAt(0).startContainer : null;
    const element = node && (node.nodeType === Node.ELEMENT_NODE ? node : node.parentElement);
    return element && element.closest('td,th');
  };
  const tableOf = cell => cell && cell.closest('table');
  quill.inTable = () => Boolean(tableOf(cellAtCaret()));

  // grid[row][column] is the cell that covers the place, whatever it spans.
  const gridOf = table => {
    const grid = Array.from(table.rows, () => []);
    Array.from(table.rows).forEach((row, r) => Array.from(row.cells).forEach(cell => {
      let c = 0;
      while (grid[r][c]) ++c;
      const height = Math.min(cell.rowSpan || 1, grid.length - r);
      for (let y = 0; y < height; ++y) for (let x = 0; x < cell.colSpan; ++x) grid[r + y][c + x] = cell;
    }));
    return grid;
  };
  const placeOf = (grid, cell) => {
    const row = grid.findIndex(cells => cells.includes(cell));
    return { row, column: grid[row].indexOf(cell) };
  };
  const emptyCell = like => {
    const cell = document.createElement(like && like.tagName === 'TH' ? 'th' : 'td');
    cell.innerHTML = '&nbsp;';
    return cell;
  };

  const shrink = (cell, span) => {
    if (--cell[span] === 1) cell.removeAttribute(span);
  };

  const insertRow = (table, grid, at) => {
    const row = document.createElement('tr');
    const model = grid[Math.min(at, grid.length - 1)];
    const spanned = new Set();
    model.forEach((cell, c) => {
      const above = at > 0 && grid[at - 1][c], below = at < grid.length && grid[at][c];
      const overhangs = above && !below && placeOf(grid, above).row + above.rowSpan > at;
      if (above && above === below) spanned.add(above);
      else if (!overhangs) row.append(emptyCell(cell));
    });
    spanned.forEach(cell => ++cell.rowSpan);
    if (at < grid.length) table.rows[at].before(row);
    else table.rows[at - 1].after(row);
  };
  const insertColumn = (table, grid, at) => {
    const spanned = new Set();
    grid.forEach((cells, r) => {
      const left = at > 0 && cells[at - 1], right = cells[at];
      if (left && left === right) {
        spanned.add(left);
        return;
      }
      const next = cells.slice(at).find(cell => cell.parentNode === table.rows[r]);
      const added = emptyCell(left || right);
      if (next) next.before(added);
      else table.rows[r].append(added);
    });
    spanned.forEach(cell => ++cell.colSpan);
  };
  const deleteRow = (table, grid, at) => {
    new Set(grid[at]).forEach(cell => {
      if (cell.rowSpan < 2) return;
      shrink(cell, 'rowSpan');
      if (cell.parentNode !== table.rows[at]) return;  // it begins above and is only shorter now
      const next = grid[at + 1].slice(grid[at].lastIndexOf(cell) + 1).find(c => c.parentNode === table.rows[at + 1]);
      if (next) next.before(cell);
      else table.rows[at + 1].append(cell);
    });
    table.rows[at].remove();
  };
  const deleteColumn = (table, grid, at) => {
    new Set(grid.map(cells => cells[at])).forEach(cell => {
      if (!cell) return;
      if (cell.colSpan > 1) shrink(cell, 'colSpan');
      else cell.remove();
    });
  };

  const kEdits = {
    rowAbove: (table, grid, { row }) => insertRow(table, grid, row),
    rowBelow: (table, grid, { row, cell }) => insertRow(table, grid, Math.min(grid.length, row + Math.max(1, cell.rowSpan))),
    columnLeft: (table, grid, { column }) => insertColumn(table, grid, column),
    columnRight: (table, grid, { column, cell }) => insertColumn(table, grid, column + cell.colSpan),
    deleteRow: (table, grid, { row }) => deleteRow(table, grid, row),
    deleteColumn: (table, grid, { column }) => deleteColumn(table, grid, column),
    deleteTable: table => table.replaceChildren(),
  };

  // Selects what is in it, so that typing replaces the blank of an empty one.
  const caretInto = cell => {
    if (cell) document.getSelection().selectAllChildren(cell);
  };
  const replaceTable = (table, html) => {
    const selection = document.getSelection(), range = document.createRange();
    range.selectNode(table);
    selection.removeAllRanges();
    selection.addRange(range);
    return html ? document.execCommand('insertHTML', false, html) : document.execCommand('delete');
  };

  quill.insertTable = html => {
    const before = new Set(document.querySelectorAll('table'));
    if (!quill.insert(html)) return false;
    const table = Array.from(document.querySelectorAll('table')).find(candidate => !before.has(candidate));
    caretInto(table && table.querySelector('td'));
    return true;
  };
  quill.editTable = edit => {
    const cell = cellAtCaret(), table = tableOf(cell);
    if (!table || !kEdits[edit]) return false;
    const number = Array.from(document.querySelectorAll('table')).indexOf(table);
    const copy = table.cloneNode(true);
    const { row, column } = placeOf(gridOf(table), cell);
    const grid = gridOf(copy);
    kEdits[edit](copy, grid, { row, column, cell: grid[row][column] });
    const is_left = copy.rows.length > 0 && Array.from(copy.rows).some(r => r.cells.length > 0);
    if (!replaceTable(table, is_left ? copy.outerHTML : '')) return false;
    const changed = is_left && document.querySelectorAll('table')[number];
    if (!changed) return true;
    const places = gridOf(changed);
    const target = {
      row: Math.min(edit === 'rowBelow' ? row + 1 : row, places.length - 1),
      column: edit === 'columnRight' ? column + 1 : column,
    };
    caretInto(places[target.row][Math.min(target.column, places[target.row].length - 1)]);
    return true;
  };

  // The tab key goes from cell to cell, and behind the last one into a new row. Elsewhere it may lead out of the editor.
  quill.tabLeaves = false;
  document.addEventListener('keydown', event => {
    if (event.key !== 'Tab' || event.ctrlKey || event.altKey || document.designMode !== 'on') return;
    const cell = cellAtCaret(), table = tableOf(cell);
    if (!table && !quill.tabLeaves) return;
    event.preventDefault();
    if (!table) return quill.tell(event.shiftKey ? 'leaveBackwards' : 'leave');
    const cells = Array.from(table.rows).flatMap(row => Array.from(row.cells));
    const next = cells[cells.indexOf(cell) + (event.shiftKey ? -1 : 1)];
    if (next) {
      caretInto(next);
    } else if (!event.shiftKey && quill.editTable('rowBelow')) {
      caretInto(cellAtCaret().parentNode.cells[0]);
    }
  }, true);
})();
