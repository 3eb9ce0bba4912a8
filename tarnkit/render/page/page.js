"use strict";
/* global Large, Picture */
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

const {groups, many} = Picture;
const groupOfKey = new Map();
for (const group of groups) if (!groupOfKey.has(group.key)) groupOfKey.set(group.key, group);

// The view: which part of the picture is to be seen, in canvas units.
let current = null, selected = null, focused = -1, hovered = -1, view = {x: 0, y: 0, scale: 1};
let motion = 0, drawing = 0, fresh = true;
const area = () => ({width: stage.clientWidth || 1, height: stage.clientHeight || 1});
const least = 0.02, most = 8;
const bounded = scale => Math.min(most, Math.max(least, scale));
const painting = new Large.Painting(stage);
const mostKept = 600;  // nodes and wires of a large group, before those far off go
const isFarFrom = group => Large.isLarge(group) && view.scale < 0.7;
function prepare(group) {
  if (group.picture) return;
  group.read().makePicture();
  group.wires = new Large.Stock(group.wireLayer, i => {
    const made = group.wireElements(i);
    if (nearWires.has(i)) made[0].classList.add("is-near");
    return made;
  });
  group.elements = new Large.Stock(group.nodeLayer, i => {
    const made = group.nodeElement(i);
    if (selected === group.node(i)) made.classList.add("is-selected");
    return [made];
  });
  if (Large.isLarge(group)) {
    group.grid = new Large.Grid(group);
    return;
  }
  for (let i = 0; i < group.wireCount; ++i) group.wires.add(i);
  for (let i = 0; i < group.count; ++i) group.elements.add(i);
}
function draw(now = performance.now()) {
  drawing = 0;
  const {width, height} = area(), {picture: svg, frame} = current, {scale} = view;
  // The picture is moved as a whole, which costs nothing of what is in it; by whole pixels, so that
  // it stays sharp.
  const moved = at => Math.round(at * scale * devicePixelRatio) / devicePixelRatio + "px";
  svg.style.transform = `translate(${moved(frame[0] - view.x)},${moved(frame[1] - view.y)})`;
  if (current.scale !== scale) {
    current.scale = scale;
    svg.style.width = frame[2] * scale + "px";
    svg.style.height = frame[3] * scale + "px";
    svg.classList.toggle("is-distant", scale < 0.3);
    svg.classList.toggle("is-far", scale < 0.12);
  }
  const level = Math.round(scale * 100) + " %";
  if ($("level").textContent !== level) $("level").textContent = level;
  if (Large.isLarge(current) && !stockUp(width, height, now)) redraw();
  fresh = false;
}
// Nodes that keys lead to have elements wherever they stand: the first, the last, and those beside
// the one that has the focus; from afar, so has the one below the pointer.
const isHeld = i => i === 0 || i === current.count - 1 || Math.abs(i - focused) <= 1 ||
  i === hovered || (selected && i === selected.index);
function holdNodes() {
  if (!Large.isLarge(current)) return;
  for (const i of [0, current.count - 1, focused - 1, focused, focused + 1, hovered,
    selected ? selected.index : 0]) {
    if (i >= 0 && i < current.count && !current.elements.has(i)) current.elements.add(i);
  }
}
// Of a large group: true when all stands there that is to be seen now and may be next.
function stockUp(width, height, now) {
  const {grid, elements, wires} = current, {x, y, scale} = view;
  const part = pixels => [x - pixels / scale, y - pixels / scale,
    x + (width + pixels) / scale, y + (height + pixels) / scale];
  holdNodes();
  if (isFarFrom(current)) {
    const {isWhole, isDone} = painting.paint(current, view, width, height, now);
    if (isWhole) {
      elements.keep(isHeld, Infinity);
      wires.keep(i => nearWires.has(i), Infinity);
    }
    return isDone;
  }
  painting.follow(view);
  const deadline = performance.now() + (fresh ? 200 : 5);
  const seen = part(10), next = part(150);
  const isWhole = elements.addAll(grid.nodesIn(seen), deadline) &&
    wires.addAll(grid.wiresIn(seen), deadline);
  if (isWhole) painting.clear();
  const isDone = isWhole && elements.addAll(grid.nodesIn(next), deadline) &&
    wires.addAll(grid.wiresIn(next), deadline);
  if (elements.numbers.length + wires.numbers.length > mostKept) {
    const kept = part(400), nodesKept = new Set(grid.nodesIn(kept));
    const wiresKept = new Set(grid.wiresIn(kept));
    elements.keep(i => isHeld(i) || nodesKept.has(i), 30);
    wires.keep(i => wiresKept.has(i) || nearWires.has(i), 90);
  }
  return isDone;
}
const redraw = () => { if (!drawing) drawing = requestAnimationFrame(draw); };
function show(next, glide = true) {
  cancelAnimationFrame(motion);
  if (!glide || still.matches || document.hidden || Large.isLarge(current)) {
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
  const {width, height} = area(), [x, y, w, h] = current.frame;
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
    if (current) {
      current.view = view;
      select(null, false);
      painting.clear();
      current.picture.remove();
    }
    focused = hovered = -1;
    prepare(group);
    current = group;
    fresh = true;
    stage.prepend(group.picture);
    if (group.view) show(group.view, false);
    else fit(false);
    draw();
    drawPath();
    document.title = group.title;
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
    group === current ? element("span", {"aria-current": "page"}, group.read().title) :
    element("button", {type: "button", onclick: () => up(group)}, group.read().title))));
}
function up(to) {
  let inner = current;
  while (inner.parent !== to.index && inner.parent !== inner.index) inner = groups[inner.parent];
  to.read();
  const found = [...to.inner.keys()].map(index => to.node(index)).find(
    node => node.group === inner.key);
  open(to, found);
}

// Selecting a node, and the panel. Wires of the node that are not to be seen get elements up to so
// many.
const mostNear = 300;
const nearWires = new Set();
function elementOf(node) {
  if (!current.elements.has(node.index)) current.elements.add(node.index);
  return current.elements.elements.get(node.index)[0];
}
function select(node, fill = true) {
  const emphasize = is => {
    elementOf(selected).classList.toggle("is-selected", is);
    for (const i of nearWires) {
      if (current.wires.has(i)) {
        current.wires.elements.get(i)[0].classList.toggle("is-near", is);
      } else if (is && nearWires.size <= mostNear) {
        current.wires.add(i);
      }
    }
  };
  if (selected) emphasize(false);
  nearWires.clear();
  selected = node;
  if (current) current.picture.classList.toggle("has-selection", !!node);
  if (node) {
    for (const i of current.wiresOf(node.index)) nearWires.add(i);
    emphasize(true);
  }
  if (current && Large.isLarge(current)) redraw();
  if (fill) fillPanel();
}
function fillPanel() {
  panel.replaceChildren(...(selected ? nodeDetails(selected) : groupDetails()));
  panel.scrollTop = 0;
  $("said").textContent = selected ? selected.description : current.title;
}
const heading = (text, color) => element("h1", {dir: "auto"},
  color && element("i", {style: "background:" + color}), text);
const section = (title, rows) => rows.length ? [element("h2", {}, title),
  element("ul", {}, ...rows)] : [];
function groupDetails() {
  const keys = [["Drag", "or wheel, or arrow keys: move"], ["+ −", "or Ctrl and wheel: zoom"],
    ["0", "fit"], ["1", "100 %"], ["/", "find a node"], ["Tab", "next node, Enter: its details"],
    ["Enter", "again: open its group"], ["Esc", "let go, then up"]];
  return [heading(current.title),
    element("p", {}, many(current.count, "node") + ", " +
      many(current.wireCount, "connection")),
    ...current.notes.map(note => element("p", {}, note)),
    ...section("Groups inside", [...current.inner.keys()].filter(i =>
      current.inner.get(i)[2]).map(i => current.node(i)).map(node =>
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
  const side = here === "from" ? 0 : 1;
  for (const wire of current.wiresOf(node.index)) {
    const end = current.endOf(wire, side);
    if (!end || end.node !== node) continue;
    if (!ends.has(end.port)) ends.set(end.port, []);
    ends.get(end.port).push(current.endOf(wire, 1 - side));
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
  const other = end.node;
  const text = (there === "from" ? "← " : "→ ") + end.name + " · " + end.portName;
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
  open(group, change.dataset.node !== undefined ?
    group.read().nodeOfKey(change.dataset.node) : undefined);
}
changes.forEach((change, index) => change.addEventListener("click", () => walk(index)));

// Search.
const search = $("search"), results = $("results");
let names = null, found = [], marked = -1;
const folded = text => text.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase();
function allNames() {
  if (!names) {
    names = [];
    const texts = new Map();
    for (const group of groups) {
      group.read().titles.forEach((title, index) => {
        if (!texts.has(title)) texts.set(title, folded(group.nameOf(index)));
        names.push({group, index, text: texts.get(title)});
      });
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
  found = found.slice(0, 50).map(({group, index}) => ({group, node: group.node(index)}));
  results.replaceChildren(...found.map((entry, i) => element("li", {role: "option", id: "found" + i,
    onpointerdown: event => { event.preventDefault(); take(i); }},
    element("b", {dir: "auto"}, entry.node.name),
    element("small", {dir: "auto"}, [entry.node.patchName !== entry.node.name &&
      entry.node.patchName, "in " + entry.group.title].filter(Boolean).join(" · ")))));
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
  elementOf(entry.node).focus({preventScroll: true});
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
// From afar the nodes of a large group are no elements of their own.
function nodeUnder(event) {
  if (!isFarFrom(current)) return undefined;
  const box = stage.getBoundingClientRect();
  const index = current.grid.nodeAt(view.x + (event.clientX - box.left) / view.scale,
    view.y + (event.clientY - box.top) / view.scale);
  return index < 0 ? undefined : current.node(index);
}
const nodeAt = target => {
  const made = target.closest && target.closest(".tk-node");
  return made ? made.tarnkitNode : undefined;
};
stage.addEventListener("pointerdown", event => {
  if (event.button || event.target.closest(".tools")) return;
  pointers.set(event.pointerId, {x: event.clientX, y: event.clientY});
  if (pointers.size === 1) {
    moved = 0;
    pressed = event.target;
  }
});
stage.addEventListener("pointermove", event => {
  if (pointers.size || nodeAt(event.target)) return;
  const under = nodeUnder(event);
  if (hovered === (under ? under.index : -1)) return;
  hovered = under ? under.index : -1;
  redraw();
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
  focused = node ? node.index : -1;
  holdNodes();
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
  painting.clear();
  redraw();
});
addEventListener("resize", () => { if (current) redraw(); });
addEventListener("popstate", fromAddress);
fromAddress();
})();
