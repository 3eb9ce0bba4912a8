"use strict";
/* global Picture */
/* exported Large */
// Large groups. A browser's work for a picture grows with every element in it, seen or not: of a
// large group only what is to be seen near by stands in the page, and from afar it is painted.
const Large = (() => {
const most = 800;  // nodes whose elements all stand in the page
const isLarge = group => group.count > most;

// Which nodes and wires stand where: by the cells of a grid.
class Grid {
  constructor(group) {
    const [x, y, width, height] = group.frame;
    const cell = Math.max(256, Math.sqrt(width * height * 16 / group.count));
    Object.assign(this, {group, x, y, cell, columns: Math.ceil(width / cell),
      rows: Math.ceil(height / cell), stamp: 0});
    // What is long would stand in many cells.
    this.longNodes = [];
    this.long = [];
    this.nodes = this.sorted(group.count, i => this.boxOf(i), this.longNodes);
    this.bounds = new Float32Array(group.wireCount * 4);
    this.wires = this.sorted(group.wireCount, i => {
      const bounds = this.boundsOf(i);
      this.bounds.set(bounds, i * 4);
      return bounds;
    }, this.long);
  }
  boxOf(index) {
    const {x, y} = this.group, form = this.group.form(index);
    return [x[index], y[index], x[index] + form.width, y[index] + form.height];
  }
  // A curve goes at most three quarters of the way to its controls.
  boundsOf(wire) {
    const {places, via} = this.group, at = wire * 4, pieces = via.get(wire);
    let left = Math.min(places[at], places[at + 2]), right = Math.max(places[at], places[at + 2]);
    let top = Math.min(places[at + 1], places[at + 3]);
    let bottom = Math.max(places[at + 1], places[at + 3]);
    for (let i = 1; pieces && i < pieces.length; i += 3) {
      left = Math.min(left, pieces[i], pieces[i + 2]);
      right = Math.max(right, pieces[i], pieces[i + 2]);
      top = Math.min(top, pieces[i + 1]);
      bottom = Math.max(bottom, pieces[i + 1]);
    }
    return [left - 140, top - 2, right + 140, bottom + 2];
  }
  cellsOf([x0, y0, x1, y1]) {
    const at = (value, from, count) =>
      Math.min(count - 1, Math.max(0, Math.floor((value - from) / this.cell)));
    return [at(x0, this.x, this.columns), at(y0, this.y, this.rows),
      at(x1, this.x, this.columns), at(y1, this.y, this.rows)];
  }
  sorted(count, boundsOf, long) {
    const ranges = new Uint32Array(count * 4), isLong = new Uint8Array(count);
    const starts = new Uint32Array(this.columns * this.rows + 1);
    const each = (i, visit) => {
      const at = i * 4;
      for (let row = ranges[at + 1]; row <= ranges[at + 3]; ++row) {
        for (let column = ranges[at]; column <= ranges[at + 2]; ++column) {
          visit(row * this.columns + column);
        }
      }
    };
    for (let i = 0; i < count; ++i) {
      const cells = this.cellsOf(boundsOf(i));
      ranges.set(cells, i * 4);
      if ((cells[2] - cells[0] + 1) * (cells[3] - cells[1] + 1) > 24) {
        isLong[i] = 1;
        long.push(i);
      } else {
        each(i, cell => ++starts[cell + 1]);
      }
    }
    for (let i = 1; i < starts.length; ++i) starts[i] += starts[i - 1];
    const next = starts.slice(), members = new Uint32Array(starts[starts.length - 1]);
    for (let i = 0; i < count; ++i) {
      if (!isLong[i]) each(i, cell => { members[next[cell]++] = i; });
    }
    return {starts, members, stamps: new Uint32Array(count)};
  }
  // Their numbers, of what may reach into the part.
  find({starts, members, stamps}, part, long = []) {
    const found = [], stamp = ++this.stamp, [left, top, right, bottom] = this.cellsOf(part);
    for (let row = top; row <= bottom; ++row) {
      const from = row * this.columns;
      for (let i = starts[from + left]; i < starts[from + right + 1]; ++i) {
        const member = members[i];
        if (stamps[member] !== stamp) {
          stamps[member] = stamp;
          found.push(member);
        }
      }
    }
    return long.length ? found.concat(long) : found;
  }
  nodesIn(part) {
    const {x, y} = this.group;
    return this.find(this.nodes, part, this.longNodes).filter(i => {
      const form = this.group.form(i);
      return x[i] <= part[2] && y[i] <= part[3] && x[i] + form.width >= part[0] &&
        y[i] + form.height >= part[1];
    });
  }
  wiresIn(part) {
    const {bounds} = this, [left, top, right, bottom] = part;
    return this.find(this.wires, part, this.long).filter(i => bounds[i * 4] <= right &&
      bounds[i * 4 + 1] <= bottom && bounds[i * 4 + 2] >= left && bounds[i * 4 + 3] >= top);
  }
  nodeAt(x, y) {
    const at = this.nodesIn([x, y, x, y]);
    return at.length ? Math.min(...at) : -1;
  }
}

// The elements of a layer that stand in the page, in the order of their numbers.
class Stock {
  constructor(layer, make) {
    Object.assign(this, {layer, make, numbers: [], elements: new Map()});
  }
  has(number) { return this.elements.has(number); }
  place(number) {
    let low = 0, high = this.numbers.length;
    while (low < high) {
      const middle = (low + high) >> 1;
      if (this.numbers[middle] < number) low = middle + 1;
      else high = middle;
    }
    return low;
  }
  add(number) {
    const at = this.place(number), made = this.make(number);
    const next = at < this.numbers.length ? this.elements.get(this.numbers[at])[0] : null;
    for (const element of made) this.layer.insertBefore(element, next);
    this.numbers.splice(at, 0, number);
    this.elements.set(number, made);
  }
  // Adds what is missing until the time is over; false then.
  addAll(numbers, deadline) {
    for (const number of numbers) {
      if (this.has(number)) continue;
      if (performance.now() > deadline) return false;
      this.add(number);
    }
    return true;
  }
  keep(isWanted, limit) {
    const gone = this.numbers.filter(number => !isWanted(number)).slice(0, limit);
    if (!gone.length) return;
    const left = new Set(gone);
    this.numbers = this.numbers.filter(number => !left.has(number));
    for (const number of gone) {
      for (const element of this.elements.get(number)) element.remove();
      this.elements.delete(number);
    }
  }
}

// What a group looks like from afar, painted square by square, as much of it at a time as leaves
// the frames in time. What was painted for another scale stands behind until all is there.
const side = 512;
class Painting {
  constructor(place) {
    Object.assign(this, {place, squares: new Map(), pace: 1500, last: 0});
  }
  clear() {
    if (this.holder) this.holder.remove();
    if (this.former) this.former.remove();
    this.holder = this.former = null;
    this.squares.clear();
    this.group = null;
  }
  begin(group, scale) {
    if (group !== this.group) this.clear();
    if (this.former && !this.isWhole) {
      this.holder.remove();
    } else if (this.holder) {
      if (this.former) this.former.remove();
      this.former = this.holder;
      this.formerScale = this.scale;
    }
    this.isWhole = false;
    this.squares.clear();
    this.holder = document.createElement("div");
    this.holder.className = "painting";
    this.holder.setAttribute("aria-hidden", "true");
    this.place.prepend(this.holder);
    if (this.former) this.place.prepend(this.former);
    const style = getComputedStyle(document.documentElement);
    const color = name => style.getPropertyValue("--tk-" + name).trim();
    this.colors = {body: color("body"), line: color("line"), text: color("text"),
      muted: color("muted"), chip: color("chip"), accent: color("accent"), warn: color("warn"),
      marks: ["", color("added"), color("removed"), color("changed")]};
    this.font = getComputedStyle(group.picture).fontFamily;
    Object.assign(this, {group, scale});
  }
  // Moves what is painted along with the view.
  follow(view) {
    if (!this.group) return;
    const [x, y] = this.group.frame;
    const move = (holder, scale) => {
      const [left, top] = [x - view.x, y - view.y].map(at =>
        Math.round(at * view.scale * devicePixelRatio) / devicePixelRatio + "px");
      holder.style.transform = `translate(${left},${top}) scale(${view.scale / scale})`;
    };
    move(this.holder, this.scale);
    if (this.former) move(this.former, this.formerScale);
  }
  // Paints on, and tells whether all is there that is to be seen, and all that may be next.
  paint(group, view, width, height, now) {
    if (this.group !== group || this.scale !== view.scale) this.begin(group, view.scale);
    const ratio = devicePixelRatio, [x, y, w, h] = group.frame;
    const left = (view.x - x) * view.scale, top = (view.y - y) * view.scale;
    this.follow(view);
    // While the view rests, frames may take longer.
    const late = now - this.last, rests = this.lastView === view;
    if (this.last && late < 500) {
      const pace = this.pace * (late > (rests ? 70 : 25) ? 0.6 : 1.1);
      this.pace = Math.min(rests ? 20000 : 2000, Math.max(rests ? 2000 : 300, pace));
    }
    this.lastView = view;
    this.last = now;
    let budget = this.pace;
    const across = Math.ceil(w * view.scale / side), down = Math.ceil(h * view.scale / side);
    const bounded = (at, count) => Math.min(count - 1, Math.max(0, Math.floor(at / side)));
    const needed = margin => {
      const found = [];
      for (let row = bounded(top - margin, down); row <= bounded(top + height + margin, down);
        ++row) {
        for (let column = bounded(left - margin, across);
          column <= bounded(left + width + margin, across); ++column) {
          found.push(row * across + column);
        }
      }
      return found;
    };
    const paintThose = numbers => numbers.every(number => {
      let square = this.squares.get(number);
      if (!square) {
        square = this.begun(number % across, Math.floor(number / across), ratio);
        this.squares.set(number, square);
      }
      while (!square.isDone && budget > 0) {
        const {value, done} = square.work.next();
        budget -= value || 0;
        square.isDone = done === true;
      }
      return square.isDone;
    });
    const isWhole = this.isWhole = paintThose(needed(0));
    if (isWhole && this.former) {
      this.former.remove();
      this.former = null;
    }
    const isDone = isWhole && paintThose(needed(side / 2));
    const kept = new Set(needed(side));
    for (const [number, square] of this.squares) {
      if (kept.has(number)) continue;
      square.canvas.remove();
      this.squares.delete(number);
    }
    if (isDone) this.last = 0;
    return {isWhole, isDone};
  }
  begun(column, row, ratio) {
    const canvas = document.createElement("canvas");
    canvas.width = canvas.height = Math.ceil(side * ratio);
    canvas.style.left = column * side + "px";
    canvas.style.top = row * side + "px";
    this.holder.append(canvas);
    const scale = this.scale * ratio, [x, y] = this.group.frame;
    const x0 = x + column * side / this.scale, y0 = y + row * side / this.scale;
    const context = canvas.getContext("2d");
    context.setTransform(scale, 0, 0, scale, -x0 * scale, -y0 * scale);
    const part = [x0, y0, x0 + side / this.scale, y0 + side / this.scale];
    return {canvas, isDone: false, work: this.work(context, part)};
  }
  * work(context, part) {
    const {group, scale} = this, step = 150;
    const wires = group.grid.wiresIn(part);
    yield wires.length / 10;
    context.lineCap = "round";
    for (let i = 0; i < wires.length; i += step) {
      this.paintWires(context, wires.slice(i, i + step), scale < 0.06);
      yield step;
    }
    const nodes = group.grid.nodesIn(part);
    for (let i = 0; i < nodes.length; i += step) {
      for (const node of nodes.slice(i, i + step)) {
        if (scale < 0.12) this.paintFarNode(context, node);
        else this.paintNode(context, node);
      }
      yield step;
    }
  }
  paintWires(context, wires, areStraight) {
    const {group} = this, {places, wireColors} = group;
    let color = -1, mark = 0;
    for (const wire of wires) {
      const at = wire * 4, marked = group.markOfWire(wire);
      if (color !== wireColors[wire] || mark !== marked) {
        if (color >= 0) context.stroke();
        color = wireColors[wire];
        mark = marked;
        context.strokeStyle = mark ? this.colors.marks[mark] : Picture.tables.colors[color];
        context.lineWidth = mark ? 3 : 2;
        context.beginPath();
      }
      context.moveTo(places[at], places[at + 1]);
      if (areStraight && !group.via.has(wire)) context.lineTo(places[at + 2], places[at + 3]);
      else {
        group.eachPiece(wire, (...points) => context.bezierCurveTo(...points),
          (x, y) => context.lineTo(x, y));
      }
    }
    if (color >= 0) context.stroke();
  }
  strokeOf(node, form) {
    const mark = this.group.marks.get(node);
    return mark && mark[1] ? this.colors.marks[mark[1]] :
      form.complaint === undefined ? this.colors.line : this.colors.warn;
  }
  paintFarNode(context, node) {
    const {group} = this, form = group.form(node), x = group.x[node], y = group.y[node];
    const mark = group.marks.get(node);
    context.fillStyle = mark && mark[1] ? this.colors.marks[mark[1]] : this.colors.body;
    context.fillRect(x, y, form.width, form.height);
    context.fillStyle = form.color;
    context.fillRect(x, y, form.width, Picture.size.titleHeight);
  }
  paintNode(context, node) {
    const {group} = this, form = group.form(node), x = group.x[node], y = group.y[node];
    const {inset, titleHeight, badgePadding, radius} = Picture.size, inner = group.inner.get(node);
    const mark = group.marks.get(node), light = form.light ? "#fff" : "#000";
    context.lineWidth = mark && mark[1] ? 2.5 : 1;
    context.strokeStyle = this.strokeOf(node, form);
    const rounded = (dx, dy, width, height, corners) => {
      context.beginPath();
      if (context.roundRect) context.roundRect(x + dx, y + dy, width, height, corners);
      else context.rect(x + dx, y + dy, width, height);
    };
    context.fillStyle = this.colors.body;
    for (const shift of inner && inner[3] ? [4, 0] : [0]) {
      rounded(shift, shift, form.width, form.height, radius);
      context.fill();
      context.stroke();
    }
    context.fillStyle = form.color;
    rounded(0, 0, form.width, titleHeight,
      form.height > titleHeight ? [radius, radius, 0, 0] : radius);
    context.fill();
    this.text(context, group.titles[node], "bold 12px", light, x + inset, y + 17.5);
    if (inner && inner[3]) {
      const badge = form.width - inset + 3 - inner[3];
      context.fillStyle = light;
      context.globalAlpha = 0.18;
      rounded(badge, 5, inner[3], 16, 8);
      context.fill();
      context.globalAlpha = 1;
      this.words(context, String(inner[2]), "bold 10px", light, x + badge + badgePadding,
        y + 16.5);
    }
    if (this.scale < 0.3) return;
    for (const line of form.inputs.lines) this.paintLine(context, form, line, x, y, true);
    for (const line of form.outputs.lines) this.paintLine(context, form, line, x, y, false);
    if (form.complaint !== undefined) {
      this.text(context, form.complaint, "10px", this.colors.warn, x + inset,
        y + Picture.lineY(form.lineCount) + 3.5);
    }
  }
  words(context, words, font, color, x, y, fromTheRight = false) {
    context.font = font + " " + this.font;
    context.fillStyle = color;
    context.textAlign = fromTheRight ? "right" : "left";
    context.fillText(words, x, y);
  }
  text(context, number, ...more) {
    const {shown, rightToLeft} = Picture.labelOf(number);
    context.direction = rightToLeft ? "rtl" : "ltr";
    this.words(context, shown, ...more);
    context.direction = "ltr";
  }
  paintLine(context, form, {flags, row, y: at}, left, top, isInput) {
    const {colors} = this, {inset, chevron} = Picture.size, y = top + at;
    const edge = left + (isInput ? inset : form.width - inset);
    const isConnected = Picture.isConnected(flags);
    const dot = (color, isFilled) => {
      context.beginPath();
      context.arc(left + (isInput ? 0 : form.width), y, Picture.size.dot, 0, 2 * Math.PI);
      context.fillStyle = isFilled ? color : colors.body;
      context.strokeStyle = color;
      context.lineWidth = 1.5;
      context.fill();
      context.stroke();
    };
    if (!Picture.isDrawn(flags)) {
      const behind = Picture.isCollapsed(flags) ? chevron : 0;
      if (behind) dot(colors.muted, isConnected);
      this.text(context, row[1], "bold 10px", colors.muted, isInput ? edge + behind : edge - behind,
        y + 4, !isInput);
      return;
    }
    const port = Picture.tables.ports[row[1]];
    dot(Picture.tables.colors[port[2]], isConnected || row[3] !== undefined);
    this.text(context, port[1], "11px", colors.text, edge, y + 4, !isInput);
    if (!isConnected && row[2] >= 0) {
      this.paintValue(context, Picture.tables.values[row[2]], left + form.valueX, y);
    }
  }
  paintValue(context, [kind, text, isSet, more, opacity], x, y) {
    const {colors} = this, {chipPadding, swatch} = Picture.size;
    if (kind === 3) {
      context.fillStyle = colors.chip;
      context.fillRect(x, y - 7, more, 14);
      this.text(context, text, "10px", isSet ? colors.text : colors.muted, x + chipPadding,
        y + 3.5);
      return;
    }
    context.fillStyle = kind === 2 ? "#fff" : more ? colors.accent : colors.chip;
    context.fillRect(x, y - 6, kind === 2 ? swatch : 20, 12);
    if (kind === 2) {
      context.fillStyle = Picture.tables.colors[more];
      context.globalAlpha = opacity;
      context.fillRect(x, y - 6, swatch, 12);
      context.globalAlpha = 1;
      return;
    }
    context.beginPath();
    context.arc(x + (more ? 14 : 6), y, 4, 0, 2 * Math.PI);
    context.fillStyle = colors.body;
    context.fill();
  }
}
return {isLarge, Grid, Stock, Painting};
})();
