"use strict";
/* exported Picture */
// Draws the groups of the page from its data: the same elements as a picture that stands alone.
const Picture = (() => {
const tables = JSON.parse(document.getElementById("tables").textContent);
const size = tables.measures;
const markNames = ["", "added", "removed", "changed"];
const told = 1, drawn = 2, connected = 4, changed = 8, collapsed = 32;

// Texts.
const fullText = number => {
  const entry = tables.texts[number];
  return typeof entry === "object" ? tables.texts[entry[0]] : entry;
};
const textOrNone = number => number < 0 ? undefined : fullText(number);
const shownText = text => text.replace(/[\t\n\r\x85\u2028\u2029]/g, " ")
  .replace(/[\p{Cc}\p{Cs}\ufffe\uffff]/gu, "\ufffd");
// What is to be seen of a text, and whether that is not all and whether it runs from the right.
const labels = [];
function labelOf(number) {
  if (!labels[number]) {
    const entry = tables.texts[number];
    const full = shownText(fullText(number));
    labels[number] = typeof entry !== "object" ? {shown: full} :
      entry[1] < 0 ? {shown: full, rightToLeft: true} :
        {shown: shownText(tables.texts[entry[1]]) + "…", full, rightToLeft: entry[2] === 1};
  }
  return labels[number];
}

// Elements. Coordinates are rounded as those of a picture that stands alone.
const rounded = number => Math.round(number * 100) / 100;
function vector(name, attributes, ...children) {
  const made = document.createElementNS("http://www.w3.org/2000/svg", name);
  for (const key in attributes) {
    const value = attributes[key];
    if (value !== undefined) {
      made.setAttribute(key, typeof value === "number" ? rounded(value) : value);
    }
  }
  made.append(...children.filter(child => child));
  return made;
}
const titled = text => vector("title", {}, text);
function textAt(kind, x, y, number, fromTheRight = false) {
  const {shown, full, rightToLeft} = labelOf(number);
  return vector("text", {class: kind, x, y, ...(rightToLeft &&
    {direction: "rtl", "unicode-bidi": "embed"}),
  // A text that runs from the right starts at its right edge.
  "text-anchor": fromTheRight !== Boolean(rightToLeft) ? "end" : undefined},
  full !== undefined && titled(full), shown);
}
const plainText = (kind, x, y, words, more) => vector("text", {class: kind, x, y, ...more}, words);
const lineY = index => size.titleHeight + size.padding + (index + 0.5) * size.lineHeight;
function dots(x, y, color, filled, ringed) {
  return [ringed && vector("circle", {class: "tk-ring", r: 7, cx: x, cy: y, stroke: color}),
    vector("circle", {class: filled ? "tk-dot" : "tk-dot tk-open", cx: x, cy: y, r: size.dot,
      stroke: color, fill: filled ? color : undefined})];
}
function valueAt(x, y, [kind, text, isSet, ...more]) {
  if (kind === 1) {
    const on = more[0] === 1;
    return [vector("rect", {class: on ? "tk-switch tk-on" : "tk-switch", rx: 6, width: 20,
      height: 12, x, y: y - 6}, titled(on ? "on" : "off")),
    vector("circle", {class: "tk-knob", r: 4, cx: x + (on ? 14 : 6), cy: y})];
  }
  if (kind === 2) {
    const swatch = {class: "tk-swatch", rx: 3, width: size.swatch, height: 12, x, y: y - 6};
    return [vector("rect", {...swatch, fill: "#ffffff"}), vector("rect",
      {...swatch, fill: tables.colors[more[0]], "fill-opacity": more[1]},
      titled(shownText(fullText(text))))];
  }
  return [vector("rect", {class: "tk-chip", rx: 3, height: 14, x, y: y - 7, width: more[0]}),
    textAt(isSet ? "tk-value tk-set" : "tk-value", x + size.chipPadding, y + 3.5, text)];
}
function lineOf(form, {flags, row, y}, isInput) {
  const edge = isInput ? size.inset : form.width - size.inset, at = isInput ? 0 : form.width;
  const orientation = isInput ? "input" : "output";
  if (flags & drawn) {
    const [key, name, color] = tables.ports[row[1]], published = row[3] !== undefined;
    const value = flags & connected || row[2] < 0 ? [] :
      valueAt(form.valueX, y, tables.values[row[2]]);
    return vector("g", {class: flags & changed ? "tk-port is-changed" : "tk-port",
      "data-port": textOrNone(key), "data-orientation": orientation,
      "data-connected": flags & connected ? "true" : undefined},
    ...dots(at, y, tables.colors[color], flags & connected || published, published),
    textAt("tk-name", edge, y + 4, name, !isInput), ...value);
  }
  const isCollapsed = flags & collapsed, chevron = isCollapsed ? size.chevron : 0;
  return vector("g", {class: isCollapsed ? "tk-collapsed" : "tk-group",
    "data-port-group": fullText(row[1]), "data-orientation": orientation},
  isCollapsed && vector("circle", {class: flags & connected ? "tk-many" : "tk-many tk-open", r: 4,
    cx: at, cy: y}),
  isCollapsed && vector("path", {class: "tk-chevron",
    d: `M${rounded(isInput ? edge + 1 : edge - 4)} ${y - 3}l3 3l-3 3`}),
  textAt("tk-heading", isInput ? edge + chevron : edge - chevron, y + 4, row[1], !isInput));
}
function barPath({width, height}) {
  const across = rounded(width - 2 * size.radius);
  return "M0 " + (height <= size.titleHeight ? `7v12a7 7 0 0 0 7 7h${across}a7 7 0 0 0 7 -7v-12` :
    `26h${rounded(width)}v-19`) + `a7 7 0 0 0 -7 -7h${-across}a7 7 0 0 0 -7 7z`;
}
function signOf(mark) {
  const d = ["", "M-4 0h8M0 -4v8", "M-4 0h8", "M-4 1.5c2 -4 3 -4 4 -1.5s2 2.5 4 -1.5"][mark];
  return vector("g", {class: "tk-sign"}, titled(markNames[mark]), vector("circle", {r: 8}),
    vector("path", {d}));
}

// What many nodes have in common. Each is read when it is first needed.
const sides = [], forms = [];
function sideOf(number) {
  if (!sides[number]) {
    const rows = tables.sides[number], y = new Float64Array(rows.length).fill(NaN), lines = [];
    rows.forEach((each, i) => {
      const row = tables.rows[each], flags = row[0];
      if (!(flags & ~(told | connected))) return;  // only told of
      y[i] = lineY(lines.length);
      lines.push({flags, row, y: y[i]});
    });
    sides[number] = {rows, y, lines};
  }
  return sides[number];
}
function formOf(number) {
  if (!forms[number]) {
    const [kind, color, inputs, outputs, parameters, width, valueX, complaint] =
      tables.forms[number];
    const form = {kind: tables.kinds[kind], color: tables.colors[color],
      light: tables.light[color] === 1, inputs: sideOf(inputs), outputs: sideOf(outputs),
      parameters, width, valueX, complaint, height: size.titleHeight, made: null};
    form.lineCount = Math.max(form.inputs.lines.length, form.outputs.lines.length);
    const lines = form.lineCount + (complaint === undefined ? 0 : 1);
    if (lines) form.height += 2 * size.padding + lines * size.lineHeight;
    forms[number] = form;
  }
  return forms[number];
}
// All of a node but what is its own.
function bodyOf(form) {
  if (!form.made) {
    form.made = vector("g", {class: form.complaint === undefined ? "tk-node" : "tk-node tk-missing",
      tabindex: "0", role: "button", "data-patch": textOrNone(form.kind[0])},
    vector("rect", {class: "tk-body", rx: size.radius, width: form.width, height: form.height}),
    vector("path", {class: "tk-bar", fill: form.color, d: barPath(form)}),
    ...form.inputs.lines.map(line => lineOf(form, line, true)),
    ...form.outputs.lines.map(line => lineOf(form, line, false)),
    form.complaint !== undefined && textAt("tk-value tk-warn", size.inset,
      lineY(form.lineCount) + 3.5, form.complaint));
  }
  return form.made.cloneNode(true);
}

// A group: its data stand in the page and are read when first needed.
class Group {
  constructor(script, index) {
    Object.assign(this, {script, index, key: script.dataset.group, parent: +script.dataset.parent,
      view: null, count: 0});
  }
  read() {
    if (this.forms) return this;
    const data = JSON.parse(this.script.textContent);
    this.script.remove();
    this.title = fullText(data.title);
    Object.assign(this, {notes: data.notes || [], frame: data.frame, edge: data.edge,
      edgePorts: data.edgePorts || [], emptyAt: data.emptyAt, titles: data.titles || [],
      forms: data.forms || [], count: (data.forms || []).length, packedKeys: data.keys || [],
      odd: data.odd || []});
    const sums = steps => {
      let sum = 0;
      return Float64Array.from(steps || [], step => (sum += step) / data.unit);
    };
    this.x = sums(data.x);
    this.y = sums(data.y);
    this.inner = new Map((data.groups || []).map(each => [each[0], each]));
    this.marks = new Map((data.marks || []).map(each => [each[0], each]));
    this.via = new Map((data.via || []).map(each => [each[0], each]));
    this.nodes = [];
    this.readWires(data.wires || []);
    return this;
  }
  // Of each wire: the nodes and rows at its ends, -1 where they are odd; where it ends; its color.
  readWires(packed) {
    const count = packed.length / 4;
    this.wireCount = count;
    this.ends = new Int32Array(count * 4);
    this.places = new Float64Array(count * 4);
    this.wireColors = new Int32Array(count);
    this.oddOf = new Map();
    let from = 0;
    for (let i = 0; i < count; ++i) {
      const at = i * 4;
      if (packed[at + 1] < 0) {
        const odd = this.odd[this.oddOf.size];
        this.oddOf.set(i, odd);
        this.ends.set([odd[0], -1, odd[3], -1], at);
        this.places.set([odd[1], odd[2], odd[4], odd[5]], at);
        this.wireColors[i] = odd[6];
        continue;
      }
      from += packed[at];
      const to = from + packed[at + 2], fromRow = packed[at + 1], toRow = packed[at + 3];
      const output = formOf(this.forms[from]), input = formOf(this.forms[to]);
      this.ends[at] = from;
      this.ends[at + 1] = fromRow;
      this.ends[at + 2] = to;
      this.ends[at + 3] = toRow;
      this.places[at] = this.x[from] + output.width;
      this.places[at + 1] = this.y[from] + output.outputs.y[fromRow];
      this.places[at + 2] = this.x[to];
      this.places[at + 3] = this.y[to] + input.inputs.y[toRow];
      const port = tables.rows[output.outputs.rows[fromRow]][1];
      this.wireColors[i] = tables.ports[port][2];
    }
  }
  keys() {
    if (!this.allKeys) {
      this.allKeys = [];
      for (const key of this.packedKeys) {
        if (typeof key === "string") this.allKeys.push(key);
        else for (let i = 0; i < key[2]; ++i) this.allKeys.push(key[0] + (key[1] + i));
      }
      this.packedKeys = null;
    }
    return this.allKeys;
  }
  form(index) { return formOf(this.forms[index]); }
  nodeOfKey(key) {
    if (!this.indexOfKey) this.indexOfKey = new Map(this.keys().map((each, i) => [each, i]));
    const index = this.indexOfKey.get(key);
    return index === undefined ? undefined : this.node(index);
  }
  // All that the page tells of a node.
  node(index) {
    if (!this.nodes[index]) this.nodes[index] = new Node(this, index);
    return this.nodes[index];
  }
  nameOf(index) { return fullText(this.titles[index]); }
  // The wires at each node, in their order.
  wiresOf(index) {
    if (!this.wireStarts) {
      const {ends, count} = this, starts = new Int32Array(count + 1);
      const each = visit => {
        for (let i = 0; i < this.wireCount; ++i) {
          const from = ends[i * 4], to = ends[i * 4 + 2];
          if (from >= 0) visit(from, i);
          if (to >= 0 && to !== from) visit(to, i);
        }
      };
      each(node => ++starts[node + 1]);
      for (let i = 0; i < count; ++i) starts[i + 1] += starts[i];
      const next = starts.slice(), wires = new Int32Array(starts[count]);
      each((node, wire) => { wires[next[node]++] = wire; });
      this.wireStarts = starts;
      this.wiresByNode = wires;
    }
    return this.wiresByNode.subarray(this.wireStarts[index], this.wireStarts[index + 1]);
  }
  // The node and the row at an end, side 0 at an output; or what is told of one that is elsewhere;
  // null for a port that is gone.
  packedEnd(wire, side) {
    const at = wire * 4 + side * 2;
    return this.ends[at + 1] < 0 ? this.oddOf.get(wire)[8 + side] || null :
      [this.ends[at], this.ends[at + 1]];
  }
  portAt([node, row], side) {
    const form = this.form(node);
    return tables.ports[tables.rows[form[side ? "inputs" : "outputs"].rows[row]][1]];
  }
  // What the panel tells of an end: its node here, the key of its port, and what both are called.
  endOf(wire, side) {
    const end = this.packedEnd(wire, side);
    if (!end) return null;
    if (end.length === 4) {
      const [key, port, name, portName] = end.map(textOrNone);
      return {node: this.nodeOfKey(key), port, name, portName};
    }
    const [port, portName] = this.portAt(end, side), node = this.node(end[0]);
    return {node, port: textOrNone(port), name: node.name, portName: fullText(portName)};
  }
  addressOf(wire, side) {
    const end = this.packedEnd(wire, side);
    if (!end) return "";
    return end.length === 4 ? textOrNone(end[0]) + "/" + textOrNone(end[1]) :
      this.keys()[end[0]] + "/" + textOrNone(this.portAt(end, side)[0]);
  }
  markOfWire(wire) {
    const odd = this.oddOf.get(wire);
    return odd ? odd[7] : 0;
  }
  // Visits the pieces of a wire's line: curves with two controls, and level lines.
  eachPiece(wire, curve, level) {
    const at = wire * 4, {places} = this, via = this.via.get(wire);
    const endX = places[at + 2], endY = places[at + 3];
    const startX = places[at];
    let x = startX, y = places[at + 1], direction = 1;
    const curveTo = (toX, toY, arriving) => {
      const dx = Math.abs(toX - x), dy = Math.abs(toY - y);
      const turnsBack = direction !== arriving || (toX - x) * direction < 24;
      const reach = turnsBack ? Math.min(180, Math.max(40, 40 + dx * 0.12 + dy * 0.1)) :
        Math.min(160, Math.max(16, dx * 0.5, Math.min(dy, 60) * 0.5));
      curve(x + direction * reach, y, toX - arriving * reach, toY, toX, toY);
      x = toX;
      y = toY;
      direction = arriving;
    };
    for (let i = 1; via && i < via.length; i += 3) {
      const run = via[i + 2] - via[i];
      curveTo(via[i], via[i + 1], run < 0 || (run === 0 && endX < startX) ? -1 : 1);
      x = via[i + 2];
      level(x, y);
    }
    curveTo(endX, endY, 1);
  }
  pathOf(wire) {
    const at = wire * 4;
    let d = `M${rounded(this.places[at])} ${rounded(this.places[at + 1])}`;
    this.eachPiece(wire, (...points) => {
      const [ax, ay, bx, by, x, y] = points.map(rounded);
      d += `C${ax} ${ay} ${bx} ${by} ${x} ${y}`;
    }, (x, y) => { d += `L${rounded(x)} ${rounded(y)}`; });
    return d;
  }

  // Elements.
  nodeElement(index) {
    const form = this.form(index), node = this.node(index), made = bodyOf(form);
    const light = form.light ? "tk-light" : "tk-dark";
    const mark = this.marks.get(index), inner = this.inner.get(index);
    const bar = made.children[1];
    let title = textAt("tk-title " + light, size.inset, 17.5, this.titles[index]);
    bar.after(title);
    if (inner) made.setAttribute("data-group", node.group);
    if (inner && inner[3]) {
      made.prepend(vector("rect", {class: "tk-stack", rx: size.radius, x: 4, y: 4,
        width: form.width, height: form.height}));
      const x = form.width - size.inset + 3 - inner[3];
      const badge = vector("rect", {class: "tk-badge " + light, rx: 8, y: 5, height: 16, x,
        width: inner[3]});
      title.after(badge);
      title = plainText("tk-count " + light, x + size.badgePadding, 16.5, String(inner[2]));
      badge.after(title);
    }
    if (mark) {
      if (mark[1]) {
        made.classList.add("is-" + markNames[mark[1]]);
        made.append(signOf(mark[1]));
      }
      if (mark[2]) made.classList.add("holds-changes");
    }
    made.setAttribute("data-node", node.key);
    made.setAttribute("aria-label", node.description);
    const x = rounded(this.x[index]), y = rounded(this.y[index]);
    made.setAttribute("transform", `translate(${x} ${y})`);
    made.tarnkitNode = node;
    return made;
  }
  // With the small circle at an end that stands elsewhere.
  wireElements(wire) {
    const color = tables.colors[this.wireColors[wire]], mark = this.markOfWire(wire);
    const made = [vector("path", {class: mark ? "tk-wire is-" + markNames[mark] : "tk-wire",
      "data-from": this.addressOf(wire, 0), "data-to": this.addressOf(wire, 1), stroke: color,
      d: this.pathOf(wire)})];
    const at = wire * 4, far = this.ends[at] < 0 ? 0 : this.ends[at + 2] < 0 ? 2 : -1;
    if (far >= 0) {
      made.push(vector("circle", {class: "tk-far", r: 3, cx: this.places[at + far],
        cy: this.places[at + far + 1], stroke: color}));
    }
    return made;
  }
  edgePortElement([label, key, color, isInput, mark, width, y, innerX, innerY]) {
    const sign = isInput ? 1 : -1, [left, , across] = this.edge, {edgeHeight, edgePadding} = size;
    const at = isInput ? left : left + across, tip = at + sign * (width + 2 * edgePadding);
    const hasInner = innerX !== undefined, stroke = tables.colors[color];
    const straight = rounded(sign * (width + 2 * edgePadding - 6)), turn = isInput ? 1 : 0;
    const down = edgeHeight - 12, round = isInput ? 6 : -6;
    let link = null;
    if (hasInner) {
      const ends = isInput ? [tip, y, innerX, innerY] : [innerX, innerY, tip, y];
      const line = Object.create(Group.prototype);
      Object.assign(line, {places: ends, via: new Map()});
      link = vector("path", {class: "tk-link", stroke, d: line.pathOf(0)});
    }
    return vector("g", {class: "tk-edge" + (hasInner ? "" : " tk-missing") +
      (mark ? " is-" + markNames[mark] : ""), "data-port": textOrNone(key),
    "data-orientation": isInput ? "input" : "output"}, link,
    vector("path", {class: "tk-tab", d: `M${rounded(at)} ${rounded(y - edgeHeight / 2)}` +
      `h${straight}a6 6 0 0 ${turn} ${round} 6v${down}a6 6 0 0 ${turn} ${-round} 6h${-straight}z`}),
    textAt("tk-name", at + sign * edgePadding, y + 4, label, !isInput),
    ...dots(tip, y, stroke, hasInner, false));
  }
  // The picture without its nodes and wires, and the layers for those.
  makePicture() {
    const [x, y, width, height] = this.frame;
    this.wireLayer = vector("g", {class: "wires"});
    this.nodeLayer = vector("g", {class: "nodes"});
    const notes = this.notes.map((note, i) => plainText("tk-note", x + size.margin, y + height -
      size.margin + 8 - size.noteHeight * (this.notes.length - 1 - i), note));
    this.picture = vector("svg", {class: "tk-picture", role: "group", "aria-label": this.title,
      "data-group": this.key, viewBox: this.frame.join(" "),
      preserveAspectRatio: "xMinYMin"},
    vector("rect", {class: "tk-canvas", x, y, width, height}),
    this.edge && vector("rect", {class: "tk-frame", rx: 12, x: this.edge[0], y: this.edge[1],
      width: this.edge[2], height: this.edge[3]}),
    ...this.edgePorts.map(port => this.edgePortElement(port)), this.wireLayer, this.nodeLayer,
    this.emptyAt !== undefined && plainText("tk-note tk-empty", x + width / 2, this.emptyAt,
      "This group is empty.", {"text-anchor": "middle"}), ...notes);
  }
}

// What the page tells of a node. A swatch is the color that a value is.
class Node {
  constructor(group, index) {
    const form = group.form(index), inner = group.inner.get(index), mark = group.marks.get(index);
    const [patch, patchName, category] = form.kind.map(textOrNone);
    Object.assign(this, {index, form, key: group.keys()[index], name: group.nameOf(index), patch,
      patchName, category, color: form.color, group: inner && fullText(inner[1]),
      count: inner && inner[2], mark: mark && mark[1] ? markNames[mark[1]] : undefined,
      complaint: form.complaint === undefined ? undefined : fullText(form.complaint),
      box: [group.x[index], group.y[index], form.width, form.height]});
  }
  get description() {
    return (this.mark ? this.mark + ": " : "") + this.name +
      (this.patchName && this.patchName !== this.name ? ", " + this.patchName : "") +
      (this.count !== undefined ? ", " + Picture.many(this.count, "node") + " inside" : "") +
      (this.complaint ? ", " + this.complaint : "");
  }
  get inputs() { return portsOf(this.form.inputs); }
  get outputs() { return portsOf(this.form.outputs); }
  get parameters() {
    const packed = tables.parameters[this.form.parameters], made = [];
    for (let i = 0; i < packed.length; i += 3) {
      made.push({name: fullText(packed[i]), value: fullText(packed[i + 1]),
        swatch: packed[i + 2] < 0 ? undefined : tables.colors[packed[i + 2]]});
    }
    return made;
  }
}
function portsOf(side) {
  return side.rows.map(number => tables.rows[number]).filter(row => row[0] & told).map(row => {
    const [key, name, color, portGroup, hidden] = tables.ports[row[1]];
    const value = row[2] < 0 ? [] : tables.values[row[2]];
    return {key: textOrNone(key), name: fullText(name), color: tables.colors[color],
      portGroup: textOrNone(portGroup), hidden: hidden === 1,
      value: value.length ? fullText(value[1]) : undefined, set: value[2] === 1,
      swatch: value[0] === 2 ? tables.colors[value[3]] : undefined, published: textOrNone(
        row[3] === undefined ? -1 : row[3])};
  });
}

const groups = [...document.querySelectorAll("script[data-group]")].map(
  (script, index) => new Group(script, index));
return {groups, tables, size, labelOf, lineY, isDrawn: flags => (flags & drawn) > 0,
  isConnected: flags => (flags & connected) > 0, isCollapsed: flags => (flags & collapsed) > 0,
  many: (count, word) => count + " " + word + (count === 1 ? "" : "s")};
})();
