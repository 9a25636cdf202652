"use strict";

const {answer, picture} = JSON.parse(document.getElementById("data").textContent);
const TEXTS = ["title", "value", "help", "description"];
const MOST_CHILDREN = 50;  // the helper leaves out those behind
const MOST_MAGNIFIED = 2;
const MOST_IN_ROW = 300;  // characters of a value
const WITHHELD = "<redacted>";

/** An element with this class and text, and these in it. Text is never taken for markup. */
function make(name, className, text, ...inside) {
  const element = document.createElement(name);
  if (className) element.className = className;
  if (text !== undefined) element.textContent = text;
  element.append(...inside);
  return element;
}

function showFailure() {
  const {code, error, hint} = answer;
  const words = [make("p", "", error ?? "The answer could not be written.")];
  if (hint) words.push(make("p", "quiet", `Next: ${hint}`));
  document.title = String(code);
  const head = [make("h1", "", "The helper could not look"), make("p", "", undefined, make("code", "", code))];
  document.body.append(make("section", "failure", undefined, ...head, ...words));
}

/** The elements in the order of the tree, each with its parent and children. */
function flatten(root) {
  const nodes = [];
  const add = (element, parent) => {
    const node = {element, parent, children: []};
    nodes.push(node);
    for (const child of element.children ?? []) node.children.push(add(child, node));
    return node;
  };
  if (root) add(root, null);
  return nodes;
}

/**
 * Whether a picture of that many pixels can be one of this rectangle, scaled down as the helper scales: both sides by
 * the same factor, cut to whole pixels.
 */
function fits({naturalWidth, naturalHeight}, [, , width, height]) {
  const scale = Math.max(naturalWidth, naturalHeight) / Math.max(width, height);
  const isNear = (pixels, length) => Math.abs(pixels - length * scale) <= 1.01;
  return scale < 1.001 && isNear(naturalWidth, width) && isNear(naturalHeight, height);
}

/** The rectangle of the screen that the picture shows, and a remark where nobody knows. */
function placeOf(image, root) {
  if (picture) return {rectangle: picture};
  const frame = root?.frame;
  const hasArea = frame && frame[2] > 0 && frame[3] > 0;
  if (!image) return {rectangle: hasArea ? frame : null};
  if (!root) return {rectangle: null};
  if (hasArea && fits(image, frame)) return {rectangle: frame};
  if (root.role === undefined) return {rectangle: null};
  const remark = "The picture shows more than the tree's first element: of a focused element, its window. " +
      "Where frames lie in it, the answer does not say; the viewer's option --picture can.";
  return {rectangle: null, remark};
}

/** What there is to say before the picture: each a text, and whether something was kept back. */
function remarksOf(data, nodes, place) {
  const remarks = [];
  if (data.sensitive_app_match) {
    const remark =
        `Picture withheld: the policy calls ${data.sensitive_bundle_id} sensitive. Its tree is not withheld.`;
    remarks.push([remark, true]);
  }
  const withheld = data.redaction_applied ? nodes.filter((node) => node.element.value === WITHHELD) : [];
  if (withheld.length) {
    const roles = [...new Set(withheld.map((node) => node.element.role))].join(", ");
    const caution = data.image ? " The picture shows what the screen showed." : "";
    remarks.push(
        [`${counted(withheld.length, "value")} withheld: the policy names the role ${roles}.${caution}`, true]);
  }
  if (!data.tcc_accessibility)
    remarks.push(["No tree: the permission to read it is missing.", false]);
  else if (nodes.length && !nodes[0].element.role && nodes.length === 1) {
    remarks.push(["The application shows no accessibility tree.", false]);
  }
  if (place.remark) remarks.push([place.remark, false]);
  return remarks.map(([text, isStop]) => make("div", isStop ? "note stop" : "note", text));
}

function counted(number, what) {
  return `${number} ${what}${number === 1 ? "" : "s"}`;
}

function headerOf(data) {
  const {app_name: name, app_bundle_id: identifier, captured_at_utc: time, scale_factor: factor} = data.context;
  document.title = String(name ?? "Screen");
  const facts = [time, `level ${data.level_used}`];
  if (identifier !== undefined) facts.unshift(identifier);
  if (factor !== undefined) facts.push(`scale ${factor}`);
  facts.push(`${counted(data.ax_node_count, "element")}, ${counted(data.ax_text_chars, "character")}`);
  const spans = facts.map((fact) => make("span", "quiet", fact));
  return make("header", "", undefined, make("h1", "", name ?? "Screen"), ...spans);
}

function rowOf(node, isRedacted) {
  const {element} = node;
  const row = make(node.children.length ? "summary" : "div", "row");
  row.tabIndex = 0;
  row.append(make("span", "role", (element.role ?? "(no role)").replace(/^AX/, "")));
  if (element.title) row.append(make("span", "title", element.title));
  if (element.value === WITHHELD && isRedacted) {
    const mark = make("span", "withheld", "withheld");
    mark.title = `The policy withholds the values of ${element.role}.`;
    row.append(mark);
  } else if (element.value && element.value !== element.title) {
    row.append(make("span", "value", element.value.slice(0, MOST_IN_ROW)));
  }
  if (!element.title && element.description) row.append(make("span", "", element.description));
  if (node.children.length >= MOST_CHILDREN) row.append(make("span", "quiet", `${MOST_CHILDREN} children, or more`));
  row.classList.toggle("unseen", !node.rect);
  return row;
}

/** The rows of a node and all below it; each node knows its row and the block that holds it and what is below. */
function branchOf(node, isRedacted) {
  node.row = rowOf(node, isRedacted);
  node.block = node.row;
  if (node.children.length) {
    node.block = make("details", "", undefined, node.row, ...node.children.map((child) => branchOf(child, isRedacted)));
    node.block.open = true;
  }
  return node.block;
}

/**
 * Whether a node is an item of a closed menu: Qt gives these frames, in the corner of the screen, but the menu none.
 */
function isInClosedMenu({parent}) {
  return parent !== null && (parent.isClosed || (parent.element.role === "AXMenu" && !parent.rect));
}

/** The frames as an image over the picture; its coordinates are those of the screen. */
function framesOf(nodes, rectangle) {
  const make = (name) => document.createElementNS("http://www.w3.org/2000/svg", name);
  const svg = make("svg");
  const [x, y, width, height] = rectangle;
  svg.setAttribute("viewBox", `${x} ${y} ${width} ${height}`);
  svg.setAttribute("preserveAspectRatio", "none");
  for (const node of nodes) {
    const {frame} = node.element;
    node.isClosed = isInClosedMenu(node);
    if (node.isClosed || !frame || frame[2] < 1 || frame[3] < 1) continue;
    if (frame[0] >= x + width || frame[1] >= y + height) continue;
    if (frame[0] + frame[2] <= x || frame[1] + frame[3] <= y) continue;
    node.rect = make("rect");
    ["x", "y", "width", "height"].forEach((name, place) => node.rect.setAttribute(name, frame[place]));
    svg.append(node.rect);
  }
  return svg;
}

/** The smallest of the elements there, the last of equal ones: what lies within others, or over them. */
function elementAt(nodes, x, y) {
  const area = (node) => node.element.frame[2] * node.element.frame[3];
  let best = null;
  for (const node of nodes) {
    if (!node.rect) continue;
    const [left, top, width, height] = node.element.frame;
    const isInside = x >= left && y >= top && x < left + width && y < top + height;
    if (isInside && (!best || area(node) <= area(best))) best = node;
  }
  return best;
}

function factsOf(node, list) {
  const {element} = node;
  const facts = [["role", element.role]];
  for (const name of TEXTS) facts.push([name, element[name]]);
  facts.push(["frame", element.frame ? element.frame.join(", ") + (node.rect ? "" : " (not in the picture)") : "none"]);
  list.replaceChildren();
  for (const [name, text] of facts)
    if (text !== undefined) list.append(make("dt", "", name), make("dd", "", text));
}

/** Lays the sheet into the middle of the stage, as large as there is room. */
function fit(stage, sheet, [width, height]) {
  const margin = 20;
  const room = [stage.clientWidth - 2 * margin, stage.clientHeight - 2 * margin];
  const scale = Math.max(0.01, Math.min(room[0] / width, room[1] / height, MOST_MAGNIFIED));
  const place = {
    left: (stage.clientWidth - width * scale) / 2,
    top: (stage.clientHeight - height * scale) / 2,
    width: width * scale,
    height: height * scale,
  };
  for (const [name, length] of Object.entries(place)) sheet.style[name] = `${length}px`;
}

/** The picture, read; null where there is none. */
async function imageOf(data) {
  if (!data.image) return null;
  const image = make("img");
  image.src = data.image;
  image.alt = "";
  await image.decode().catch(() => {});
  return image;
}

/** What lies in the middle of the stage: the picture, or a blank, and the frames over it. */
function sheetOf(image, frames, data) {
  const sheet = make("div", "sheet");
  if (image?.naturalWidth > 0)
    sheet.append(image);
  else if (image)
    sheet.append(make("p", "", "The picture cannot be read."));
  else if (!frames)
    sheet.append(make("p", "", data.sensitive_app_match ? "Picture withheld" : "No picture"));
  if (frames) sheet.append(frames);
  return sheet;
}

/** The element that is shown, in the tree and in the picture: the one that is pointed at, else the one that is kept. */
class Selection {
  constructor(facts) {
    this.facts = facts;
    this.shown = null;
    this.kept = null;
  }

  show(node) {
    if (node === this.shown) return;
    for (const part of [this.shown?.row, this.shown?.rect]) part?.classList.remove("shown");
    for (const part of [node?.row, node?.rect]) part?.classList.add("shown");
    this.shown = node;
    if (!node) return;
    node.rect?.parentNode.append(node.rect);  // over the others
    factsOf(node, this.facts);
  }

  showKept() {
    this.show(this.kept);
  }

  /** Keeps a node, or lets go of it when it is kept. */
  keep(node) {
    this.kept?.row.classList.remove("kept");
    this.kept = node === this.kept ? null : node;
    this.kept?.row.classList.add("kept");
    this.show(this.kept ?? node);
  }
}

function reveal(node) {
  for (let above = node.parent; above; above = above.parent) above.block.open = true;
  node.row.scrollIntoView({block: "nearest"});
}

function followRows(nodes, tree, selection) {
  for (const node of nodes) {
    node.row.addEventListener("mouseenter", () => selection.show(node));
    node.row.addEventListener("focus", () => selection.show(node));
    node.row.addEventListener("click", () => selection.keep(node));
  }
  tree.addEventListener("mouseleave", () => selection.showKept());
}

function followPicture(nodes, sheet, rectangle, selection) {
  const under = (event) => {
    const box = sheet.getBoundingClientRect();
    const [left, top, width, height] = rectangle;
    const x = left + ((event.clientX - box.left) / box.width) * width;
    const y = top + ((event.clientY - box.top) / box.height) * height;
    return elementAt(nodes, x, y);
  };
  sheet.addEventListener("mousemove", (event) => {
    const node = under(event) ?? selection.kept;
    if (node && node !== selection.shown) reveal(node);
    selection.show(node);
  });
  sheet.addEventListener("mouseleave", () => selection.showKept());
  sheet.addEventListener("click", (event) => {
    const node = under(event);
    if (node) selection.keep(node);
  });
}

/** Leaves the rows that have a text in them, and those above; all when there is none to look for. */
function showFound(nodes, text, count) {
  const wanted = text.trim().toLowerCase();
  const has = (node) => ["role", ...TEXTS].some((name) => node.element[name]?.toLowerCase().includes(wanted));
  const found = new Set(wanted ? nodes.filter(has) : []);
  const visible = new Set();
  for (const node of found) {
    for (let above = node; above && !visible.has(above); above = above.parent) visible.add(above);
  }
  for (const node of nodes) {
    node.block.hidden = wanted !== "" && !visible.has(node);
    for (const part of [node.row, node.rect]) part?.classList.toggle("found", found.has(node));
  }
  count.textContent = wanted ? `${found.size} of ${nodes.length}` : String(nodes.length);
  const [first] = found;
  if (first) reveal(first);
}

function searchOf(nodes, count) {
  const search = make("input");
  Object.assign(search, {type: "search", placeholder: "Search", ariaLabel: "Search the tree"});
  search.addEventListener("input", () => showFound(nodes, search.value, count));
  search.addEventListener("keydown", (event) => {
    if (event.key !== "Escape") return;
    search.value = "";
    showFound(nodes, "", count);
  });
  return search;
}

function toolsOf(nodes, frames) {
  const count = make("span", "count quiet", String(nodes.length));
  const allFrames = make("input");
  Object.assign(allFrames, {type: "checkbox", checked: true, disabled: !frames});
  allFrames.addEventListener("change", () => frames.classList.toggle("bare", !allFrames.checked));
  return make(
      "div", "tools", undefined, searchOf(nodes, count), count, make("label", "", undefined, allFrames, "Frames"));
}

async function showData(data) {
  const image = await imageOf(data);
  const isShown = image?.naturalWidth > 0;
  const nodes = flatten(data.ax_tree);
  const place = placeOf(isShown ? image : null, data.ax_tree);
  const size = isShown ? [image.naturalWidth, image.naturalHeight] : (place.rectangle?.slice(2) ?? [640, 400]);

  const frames = place.rectangle ? framesOf(nodes, place.rectangle) : null;
  const sheet = sheetOf(image, frames, data);
  const stage = make("div", "stage", undefined, sheet);
  const root = nodes.length ? branchOf(nodes[0], data.redaction_applied) : make("p", "quiet", "No tree");
  const tree = make("div", "tree", undefined, root);
  const facts = make("dl", "facts quiet", nodes.length ? "Point at an element, or click to keep it." : "");
  const notes = make("div", "notes", undefined, ...remarksOf(data, nodes, place));
  const aside = make("aside", "", undefined, toolsOf(nodes, frames), tree, facts);
  document.body.append(headerOf(data), notes, make("main", "", undefined, stage, aside));

  const selection = new Selection(facts);
  followRows(nodes, tree, selection);
  if (frames) followPicture(nodes, sheet, place.rectangle, selection);
  new ResizeObserver(() => fit(stage, sheet, size)).observe(stage);
  fit(stage, sheet, size);
}

async function main() {
  if (answer.ok)
    await showData(answer.data);
  else
    showFailure();
  document.documentElement.dataset.ready = "";
}

main();
