"use strict";
(() => {
const $ = id => document.getElementById(id);
const root = document.documentElement, stage = $("stage"), panel = $("panel");
const still = matchMedia("(prefers-reduced-motion: reduce)");
root.classList.add("script");

const element = (tag, properties = {}, ...children) => {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(properties)) {
    if (name.startsWith("on")) made.addEventListener(name.slice(2), value);
    else if (value !== undefined) made.setAttribute(name, value);
  }
  made.append(...children.filter(child => child !== undefined && child !== null));
  return made;
};

// The groups: their pictures and data stand in the page and are taken out when first needed.
const first = stage.querySelector("svg.tk-picture");
const pictures = [null, ...document.querySelectorAll("template[data-picture]")];
const groups = [...document.querySelectorAll("script[data-group]")].map((script, index) => ({
  index, script, key: script.dataset.group, parent: +script.dataset.parent, view: null}));
const groupOfKey = new Map();
for (const group of groups) if (!groupOfKey.has(group.key)) groupOfKey.set(group.key, group);
const dataOf = group => {
  if (!group.data) {
    group.data = JSON.parse(group.script.textContent);
    group.nodes = new Map(group.data.nodes.map(node => [node.key, node]));
  }
  return group.data;
};
const pictureOf = group => {
  if (!group.picture) {
    group.picture = group.index ? pictures[group.index].content.querySelector("svg") : first;
    prepare(group);
  }
  return group.picture;
};
function prepare(group) {
  const data = dataOf(group), svg = group.picture;
  group.size = svg.getAttribute("viewBox").split(" ").map(Number);
  svg.setAttribute("role", "group");
  svg.removeAttribute("width");
  svg.removeAttribute("height");
  group.elements = new Map();
  for (const made of svg.querySelectorAll(".tk-node")) {
    const node = group.nodes.get(made.dataset.node);
    made.setAttribute("tabindex", "0");
    made.setAttribute("role", "button");
    made.setAttribute("aria-label", describe(node));
    group.elements.set(node.key, made);
  }
  group.wires = new Map();
  svg.querySelectorAll(".tk-wire").forEach((wire, i) => {
    for (const end of [data.wires[i].from, data.wires[i].to]) {
      if (!end) continue;
      if (!group.wires.has(end[0])) group.wires.set(end[0], []);
      group.wires.get(end[0]).push({wire, data: data.wires[i]});
    }
  });
}
const describe = node => (node.mark ? node.mark + ": " : "") + node.name +
  (node.patchName && node.patchName !== node.name ?
  ", " + node.patchName : "") + (node.count !== undefined ? ", " + many(node.count, "node") +
  " inside" : "") + (node.complaint ? ", " + node.complaint : "");
const many = (count, word) => count + " " + word + (count === 1 ? "" : "s");

// The view: which part of the picture is to be seen, in canvas units.
let current = null, selected = null, view = {x: 0, y: 0, scale: 1}, motion = 0, drawing = 0;
const area = () => ({width: stage.clientWidth || 1, height: stage.clientHeight || 1});
const least = 0.02, most = 8;
const bounded = scale => Math.min(most, Math.max(least, scale));
function draw() {
  drawing = 0;
  const {width, height} = area(), svg = current.picture;
  svg.setAttribute("viewBox", [view.x, view.y, width / view.scale, height / view.scale].join(" "));
  svg.classList.toggle("is-distant", view.scale < 0.3);
  svg.classList.toggle("is-far", view.scale < 0.12);
  $("level").textContent = Math.round(view.scale * 100) + " %";
  cull(width / view.scale, height / view.scale);
}
// A browser's work for a picture grows with every element in it, seen or not. Of a large group only
// what is to be seen stands in the page, far away a few paths for all of it; and nothing glides.
const isLarge = group => group.nodes.size > 800;
const vector = name => document.createElementNS("http://www.w3.org/2000/svg", name);
function makeLayers(group) {
  const {picture: svg, data} = group;
  const layer = (name, elements) => {
    const made = vector("g");
    made.setAttribute("class", name);
    if (elements.length) elements[0].before(made);
    made.append(...elements);
    return made;
  };
  group.wireLayer = layer("wires", [...svg.querySelectorAll(".tk-wire,.tk-far")]);
  group.nodeLayer = layer("nodes", [...group.elements.values()]);
  group.parts = [...svg.querySelectorAll(".tk-wire")].map((wire, i) => {
    const boxes = [data.wires[i].from, data.wires[i].to].map(end => end && group.nodes.get(end[0]))
      .filter(Boolean).map(node => node.box);
    const x = Math.min(...boxes.map(b => b[0])) - 200, y = Math.min(...boxes.map(b => b[1])) - 200;
    return {element: wire, layer: group.wireLayer, box: [x, y,
      Math.max(...boxes.map(b => b[0] + b[2])) + 200 - x,
      Math.max(...boxes.map(b => b[1] + b[3])) + 200 - y]};
  });
  for (const {key, box} of data.nodes) {
    group.parts.push({element: group.elements.get(key), layer: group.nodeLayer, box});
  }
  group.far = vector("g");
  const paths = new Map();
  const add = (kind, color, d) => {
    const key = kind + color;
    if (!paths.has(key)) paths.set(key, {kind, color, pieces: []});
    paths.get(key).pieces.push(d);
  };
  for (const wire of svg.querySelectorAll(".tk-wire")) {
    add("tk-wire", wire.getAttribute("stroke"), wire.getAttribute("d"));
  }
  for (const {box: [x, y, w, h]} of data.nodes) add("tk-body", "", `M${x} ${y}h${w}v${h}h${-w}z`);
  for (const {color, box: [x, y, w]} of data.nodes) {
    add("tk-bar", color, `M${x} ${y}h${w}v26h${-w}z`);
  }
  for (const {kind, color, pieces} of paths.values()) {
    const path = vector("path");
    path.setAttribute("class", kind);
    path.setAttribute("d", pieces.join(""));
    if (color) path.setAttribute(kind === "tk-wire" ? "stroke" : "fill", color);
    group.far.append(path);
  }
}
function cull(width, height) {
  if (!isLarge(current)) return;
  if (!current.parts) makeLayers(current);
  const far = view.scale < 0.12, {parts, nodeLayer} = current;
  if (far && !current.far.parentNode) nodeLayer.after(current.far);
  if (!far) current.far.remove();
  const margin = 200, x0 = view.x - margin, y0 = view.y - margin;
  const x1 = view.x + width + margin, y1 = view.y + height + margin;
  let next = null, layer = null;
  for (let i = parts.length - 1; i >= 0; i--) {
    const part = parts[i], [x, y, w, h] = part.box;
    if (part.layer !== layer) {
      layer = part.layer;
      next = null;
    }
    const seen = !far && x <= x1 && y <= y1 && x + w >= x0 && y + h >= y0;
    if (seen && part.out !== false) layer.insertBefore(part.element, next);
    if (!seen && part.out !== true) part.element.remove();
    part.out = !seen;
    if (seen) next = part.element;
  }
}
const redraw = () => { if (!drawing) drawing = requestAnimationFrame(draw); };
function show(next, glide = true) {
  cancelAnimationFrame(motion);
  if (!glide || still.matches || document.hidden || isLarge(current)) {
    view = next;
    redraw();
    return;
  }
  const from = view, {width, height} = area(), started = performance.now();
  const centre = v => [v.x + width / v.scale / 2, v.y + height / v.scale / 2];
  const [ax, ay] = centre(from), [bx, by] = centre(next);
  const step = now => {
    const t = Math.min(1, Math.max(0, (now - started) / 220)), e = 1 - (1 - t) ** 3;
    const scale = from.scale * (next.scale / from.scale) ** e;
    view = t < 1 ? {scale, x: ax + (bx - ax) * e - width / scale / 2,
      y: ay + (by - ay) * e - height / scale / 2} : next;
    draw();
    if (t < 1) motion = requestAnimationFrame(step);
  };
  motion = requestAnimationFrame(step);
}
function fit(glide) {
  const {width, height} = area(), [x, y, w, h] = current.size;
  const scale = Math.max(least, Math.min(width / w, height / h, 1.25));
  show({scale, x: x + w / 2 - width / scale / 2, y: y + h / 2 - height / scale / 2}, glide);
}
function zoom(factor, atX = area().width / 2, atY = area().height / 2, glide = false) {
  const scale = bounded(view.scale * factor);
  show({scale, x: view.x + atX / view.scale - atX / scale,
    y: view.y + atY / view.scale - atY / scale}, glide);
}
const pan = (dx, dy) => show({...view, x: view.x + dx / view.scale, y: view.y + dy / view.scale},
  false);
function reveal(node, centred) {
  const {width, height} = area(), [x, y, w, h] = node.box;
  const margin = 24 / view.scale;
  const inside = x >= view.x + margin && y >= view.y + margin &&
    x + Math.min(w, 80) <= view.x + width / view.scale - margin &&
    y + 40 <= view.y + height / view.scale - margin;
  if (inside && !centred) return;
  const scale = centred ? Math.max(view.scale, Math.min(1, height / (h + 120))) : view.scale;
  show({scale, x: x + w / 2 - width / scale / 2,
    y: y + Math.min(h, height / scale - 48) / 2 - height / scale / 2});
}

// Opening a group.
const addressOf = group => "#" + encodeURIComponent(group.key);
function open(group, node) {
  if (current !== group) {
    if (current) current.view = view;
    select(null, false);
    current = group;
    const svg = pictureOf(group);
    stage.querySelector("svg.tk-picture").replaceWith(svg);
    if (group.view) show(group.view, false);
    else fit(false);
    draw();
    drawPath();
    document.title = group.data.title;
    if (location.hash !== addressOf(group) && (location.hash || group.index)) {
      history.pushState(null, "", addressOf(group));
    }
  }
  select(node || null);
  if (node) reveal(node, true);
}
function fromAddress() {
  let key = "";
  try { key = decodeURIComponent(location.hash.slice(1)); } catch { /* no key */ }
  open(groupOfKey.get(key) || groups[0]);
}
function drawPath() {
  const trail = [];
  for (let group = current; ; group = groups[group.parent]) {
    trail.unshift(group);
    if (group.parent === group.index) break;
  }
  const shown = trail.length > 6 ? [trail[0], null, ...trail.slice(-4)] : trail;
  $("path").replaceChildren(...shown.map(group => element("li", {},
    !group ? element("span", {title: "Groups between"}, "…") :
    group === current ? element("span", {"aria-current": "page"}, dataOf(group).title) :
    element("button", {type: "button", onclick: () => up(group)}, dataOf(group).title))));
}
function up(to) {
  let inner = current;
  while (inner.parent !== to.index && inner.parent !== inner.index) inner = groups[inner.parent];
  const node = dataOf(to).nodes.find(each => each.group === inner.key);
  open(to, node);
}

// Selecting a node, and the panel.
function select(node, fill = true) {
  if (selected) {
    current.elements.get(selected.key).classList.remove("is-selected");
    for (const {wire} of current.wires.get(selected.key) || []) wire.classList.remove("is-near");
  }
  selected = node;
  if (current) current.picture.classList.toggle("has-selection", !!node);
  if (node) {
    current.elements.get(node.key).classList.add("is-selected");
    for (const {wire} of current.wires.get(node.key) || []) wire.classList.add("is-near");
  }
  if (fill) fillPanel();
}
function fillPanel() {
  panel.replaceChildren(...(selected ? nodeDetails(selected) : groupDetails()));
  panel.scrollTop = 0;
  $("said").textContent = selected ? describe(selected) : current.data.title;
}
const heading = (text, color) => element("h1", {dir: "auto"},
  color && element("i", {style: "background:" + color}), text);
const section = (title, rows) => rows.length ? [element("h2", {}, title),
  element("ul", {}, ...rows)] : [];
function groupDetails() {
  const data = current.data;
  const keys = [["Drag", "or wheel, or arrow keys: move"], ["+ −", "or Ctrl and wheel: zoom"],
    ["0", "fit"], ["1", "100 %"], ["/", "find a node"], ["Tab", "next node, Enter: its details"],
    ["Enter", "again: open its group"], ["Esc", "let go, then up"]];
  return [heading(data.title),
    element("p", {}, many(data.nodes.length, "node") + ", " +
      many(data.wires.length, "connection")),
    ...data.notes.map(note => element("p", {}, note)),
    ...section("Groups inside", data.nodes.filter(node => node.count).map(node =>
      element("li", {class: "row"}, element("button", {class: "end", type: "button", dir: "auto",
        onclick: () => choose(node)}, node.name + " (" + node.count + ")")))),
    element("h2", {}, "Keys"),
    element("dl", {}, ...keys.flatMap(([key, text]) => [element("dt", {}, element("kbd", {}, key)),
      element("dd", {}, text)]))];
}
function nodeDetails(node) {
  const lines = [heading(node.name, node.color)];
  if (node.patch) {
    lines.push(element("p", {}, [node.patchName, node.category].filter(Boolean).join(" · "),
      node.patchName ? element("br") : null, element("code", {}, node.patch)));
  }
  if (node.complaint) lines.push(element("p", {class: "warn"}, node.complaint));
  lines.push(...section("What is different", changesOf(node)));
  if (node.group) {
    const inner = groupOfKey.get(node.group);
    lines.push(element("button", {class: "open", type: "button", ...(inner ? {} : {disabled: ""}),
      onclick: () => open(inner)}, inner ? "Open group" : "Not in this page",
      element("span", {}, many(node.count, "node"))));
  }
  return [...lines, ...section("Inputs", portRows(node, node.inputs, "to", "from")),
    ...section("Outputs", portRows(node, node.outputs, "from", "to")),
    ...section("Parameters", node.parameters.map(parameter => element("li", {class: "row"},
      element("div", {class: "main"}, element("span", {class: "name", dir: "auto"}, parameter.name),
        valueOf(parameter.value, parameter.swatch, true)))))];
}
const valueOf = (text, swatch, set) => text === undefined || text === "" ? null :
  element("span", {class: "value" + (set ? " set" : "") + (text.length > 28 ? " long" : ""),
    dir: "auto"},
    swatch ? element("i", {style: "background:" + swatch}) : null, text);
function portRows(node, ports, here, there) {
  const ends = new Map();
  const seen = new Set();
  for (const {data} of current.wires.get(node.key) || []) {
    if (seen.has(data)) continue;
    seen.add(data);
    if (!data[here] || data[here][0] !== node.key) continue;
    if (!ends.has(data[here][1])) ends.set(data[here][1], []);
    ends.get(data[here][1]).push(data[there]);
  }
  const rows = [];
  let part = "";
  for (const port of ports) {
    if (port.portGroup && port.portGroup !== part) {
      rows.push(element("li", {class: "part", dir: "auto"},
        port.portGroup + (port.hidden ? " (hidden)" : "")));
    }
    part = port.portGroup || "";
    const joined = ends.get(port.key) || [];
    rows.push(element("li", {class: "row", title: port.key},
      element("div", {class: "main"}, element("i", {style: "background:" + port.color}),
        element("span", {class: "name", dir: "auto"}, port.name),
        joined.length ? null : valueOf(port.value, port.swatch, port.set)),
      port.published !== undefined ? element("small", {class: "ends", dir: "auto"},
        "published as " + port.published) : null,
      joined.length ? element("div", {class: "ends"}, ...joined.map(end => endButton(end, there))) :
        null));
  }
  return rows;
}
function endButton(end, there) {
  if (!end) return element("small", {}, "a port that is gone");
  const other = current.nodes.get(end[0]);
  const text = (there === "from" ? "← " : "→ ") + end[2] + " · " + end[3];
  return other ? element("button", {class: "end", type: "button", dir: "auto",
    onclick: () => choose(other)}, text) : element("small", {dir: "auto"}, text + ", elsewhere");
}
function choose(node) {
  select(node);
  reveal(node, false);
}
function enter(node) {
  const inner = node.group && groupOfKey.get(node.group);
  if (inner) open(inner);
}

// The list of changes, where the page shows what leads from one document to another.
const changes = [...document.querySelectorAll("#changes .change")];
let walked = -1;
const isAt = (change, group, node) => change.dataset.group === group.key &&
  change.dataset.node === node.key;
function changesOf(node) {
  const told = changes.filter(change => isAt(change, current, node)).map(change =>
    element("li", {class: "row"}, change.querySelector("span").cloneNode(true)));
  if (node.mark && !told.length) told.push(element("li", {class: "row"}, node.mark));
  return told;
}
function walk(index) {
  if (!changes.length) return;
  if (changes[walked]) changes[walked].removeAttribute("aria-current");
  walked = (index + changes.length) % changes.length;
  const change = changes[walked], group = groupOfKey.get(change.dataset.group) || groups[0];
  change.setAttribute("aria-current", "true");
  change.focus({preventScroll: true});
  change.scrollIntoView({block: "nearest"});
  open(group, dataOf(group) && group.nodes.get(change.dataset.node));
}
changes.forEach((change, index) => change.addEventListener("click", () => walk(index)));

// Search.
const search = $("search"), results = $("results");
let names = null, found = [], marked = -1;
const folded = text => text.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase();
function allNames() {
  if (!names) {
    names = [];
    for (const group of groups) {
      for (const node of dataOf(group).nodes) names.push({group, node, text: folded(node.name)});
    }
  }
  return names;
}
function find() {
  const wanted = folded(search.value.trim());
  found = [];
  if (wanted) {
    const ranked = [[], [], []];
    for (const entry of allNames()) {
      const at = entry.text.indexOf(wanted);
      if (at >= 0) ranked[at === 0 ? (entry.text === wanted ? 0 : 1) : 2].push(entry);
    }
    found = ranked.flat();
  }
  const total = found.length;
  found = found.slice(0, 50);
  results.replaceChildren(...found.map((entry, i) => element("li", {role: "option", id: "found" + i,
    onpointerdown: event => { event.preventDefault(); take(i); }},
    element("b", {dir: "auto"}, entry.node.name),
    element("small", {dir: "auto"}, [entry.node.patchName !== entry.node.name &&
      entry.node.patchName, "in " + dataOf(entry.group).title].filter(Boolean).join(" · ")))));
  if (wanted && total !== found.length) {
    results.append(element("li", {class: "none", role: "presentation"},
      total - found.length + " more"));
  }
  if (wanted && !total) results.append(element("li", {class: "none",
    role: "presentation"}, "No node has that name"));
  results.hidden = !wanted;
  search.setAttribute("aria-expanded", String(!results.hidden));
  mark(found.length ? 0 : -1);
}
function mark(index) {
  marked = index;
  [...results.querySelectorAll("[role=option]")].forEach((item, i) => {
    item.setAttribute("aria-selected", String(i === index));
    if (i === index) item.scrollIntoView({block: "nearest"});
  });
  if (index >= 0) search.setAttribute("aria-activedescendant", "found" + index);
  else search.removeAttribute("aria-activedescendant");
}
function closeResults() {
  results.hidden = true;
  search.setAttribute("aria-expanded", "false");
}
function take(index) {
  const entry = found[index];
  if (!entry) return;
  closeResults();
  open(entry.group, entry.node);
  if (current.elements) draw();
  current.elements.get(entry.node.key).focus({preventScroll: true});
}
search.addEventListener("input", find);
search.addEventListener("focus", () => { if (search.value) find(); });
search.addEventListener("blur", closeResults);
search.addEventListener("keydown", event => {
  if (event.key === "ArrowDown" || event.key === "ArrowUp") {
    event.preventDefault();
    if (found.length) mark((marked + (event.key === "ArrowDown" ? 1 : found.length - 1)) %
      found.length);
  } else if (event.key === "Enter") take(marked);
  else if (event.key === "Escape") {
    if (results.hidden) stage.focus();
    else { closeResults(); search.value = ""; }
  }
});

// Pointers: one drags, two pinch.
const pointers = new Map();
let moved = 0, pressed = null;
// Far away the nodes of a large group are no elements of their own.
function nodeUnder(event) {
  if (!current.parts) return undefined;
  const box = stage.getBoundingClientRect();
  const x = view.x + (event.clientX - box.left) / view.scale;
  const y = view.y + (event.clientY - box.top) / view.scale;
  return current.data.nodes.find(({box: [left, top, w, h]}) =>
    x >= left && x <= left + w && y >= top && y <= top + h);
}
const nodeAt = target => {
  const made = target.closest && target.closest(".tk-node");
  return made && current.nodes.get(made.dataset.node);
};
stage.addEventListener("pointerdown", event => {
  if (event.button || event.target.closest(".tools")) return;
  pointers.set(event.pointerId, {x: event.clientX, y: event.clientY});
  if (pointers.size === 1) {
    moved = 0;
    pressed = event.target;
  }
});
addEventListener("pointermove", event => {
  const last = pointers.get(event.pointerId);
  if (!last) return;
  const dx = event.clientX - last.x, dy = event.clientY - last.y;
  if (pointers.size === 2) {
    const other = [...pointers].find(([id]) => id !== event.pointerId)[1];
    const before = Math.hypot(last.x - other.x, last.y - other.y);
    const after = Math.hypot(event.clientX - other.x, event.clientY - other.y);
    const box = stage.getBoundingClientRect();
    pan(-dx / 2, -dy / 2);
    if (before > 0) zoom(after / before, (event.clientX + other.x) / 2 - box.left,
      (event.clientY + other.y) / 2 - box.top);
    moved = 99;
  } else {
    moved += Math.abs(dx) + Math.abs(dy);
    if (moved > 4) {
      stage.classList.add("is-dragging");
      pan(-dx, -dy);
    }
  }
  pointers.set(event.pointerId, {x: event.clientX, y: event.clientY});
});
const released = event => {
  if (!pointers.delete(event.pointerId) || pointers.size) return;
  stage.classList.remove("is-dragging");
  if (event.type !== "pointerup" || moved > 4) return;
  const node = nodeAt(pressed) || nodeUnder(event);
  if (node && pressed.closest(".tk-badge,.tk-count")) enter(node);
  else select(node || null);
};
addEventListener("pointerup", released);
addEventListener("pointercancel", released);
stage.addEventListener("dblclick", event => {
  const node = nodeAt(event.target) || nodeUnder(event);
  if (node) enter(node);
});
stage.addEventListener("wheel", event => {
  event.preventDefault();
  const unit = event.deltaMode === 1 ? 16 : event.deltaMode === 2 ? area().height : 1;
  const box = stage.getBoundingClientRect();
  if (event.ctrlKey || event.metaKey) {
    zoom(Math.exp(-event.deltaY * unit * (event.deltaMode ? 0.003 : 0.008)),
      event.clientX - box.left, event.clientY - box.top);
  } else if (event.shiftKey && !event.deltaX) pan(event.deltaY * unit, 0);
  else pan(event.deltaX * unit, event.deltaY * unit);
}, {passive: false});
stage.addEventListener("focusin", event => {
  const node = nodeAt(event.target);
  stage.scrollLeft = stage.scrollTop = 0;
  if (node && event.target.matches(":focus-visible")) reveal(node, false);
});

// Keys, wherever the focus is but in the search field.
const steps = {ArrowLeft: [-80, 0], ArrowRight: [80, 0], ArrowUp: [0, -80], ArrowDown: [0, 80]};
addEventListener("keydown", event => {
  if (event.target === search || event.ctrlKey || event.metaKey || event.altKey) return;
  const onStage = stage.contains(event.target) || event.target === document.body;
  const node = nodeAt(event.target);
  if (event.key in steps && onStage) pan(...steps[event.key]);
  else if (event.key === "+" || event.key === "=") zoom(1.25, undefined, undefined, true);
  else if (event.key === "-" || event.key === "_") zoom(0.8, undefined, undefined, true);
  else if (event.key === "0") fit(true);
  else if (event.key === "1") zoom(1 / view.scale, undefined, undefined, true);
  else if (event.key === "/") search.focus();
  else if (event.key === "n" && changes.length) walk(walked + 1);
  else if (event.key === "p" && changes.length) walk(Math.max(walked, 0) - 1);
  else if ((event.key === "Enter" || event.key === " ") && node) {
    if (selected === node && event.key === "Enter") enter(node);
    else select(node);
  } else if (event.key === "Escape") {
    if (selected) select(null);
    else if (current.parent !== current.index) up(groups[current.parent]);
  } else return;
  event.preventDefault();
});
$("in").addEventListener("click", () => zoom(1.25, undefined, undefined, true));
$("out").addEventListener("click", () => zoom(0.8, undefined, undefined, true));
$("level").addEventListener("click", () => zoom(1 / view.scale, undefined, undefined, true));
$("fit").addEventListener("click", () => fit(true));
$("theme").addEventListener("click", () => {
  root.dataset.theme = root.dataset.theme === "dark" ? "light" : "dark";
});
addEventListener("resize", () => { if (current) redraw(); });
addEventListener("popstate", fromAddress);
fromAddress();
})();
