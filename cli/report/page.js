"use strict";
// Each photograph is an <article>: a picture, a plain list of its crops, and blocks of JSON with
// everything else. This script reads them and shows them as a grid or one at a time. Texts from
// the data are only ever set as text, never as markup.
document.documentElement.classList.add("js");

const kMaps = {
  ContrastMap: ["Contrast", "What differs from the background seen along the borders."],
  SaliencyMap: ["Saliency", "The outlines of large things within the contrast."],
  ContrastMask: ["Contrast mask", "The part of the contrast that counts as content."],
  ColorContrastMap: ["Colour contrast", "What differs in colour from the background."],
  PeakMap: ["Peaks", "The most striking places."],
  EdgeMap: ["Edges", "Hints of firm edges."],
  SideMapTop: ["From the top", "What differs from the strip along the top border."],
  SideMapBottom: ["From the bottom", "What differs from the strip along the bottom border."],
  SideMapLeft: ["From the left", "What differs from the strip along the left border."],
  SideMapRight: ["From the right", "What differs from the strip along the right border."]};

const byId = (id) => document.getElementById(id);
let measures = []; // {name, label, text}, the most important first
const photos = []; // {article, name, data, picture, picked}, in the order of the page
const view = { photo: -1, crop: 0, mode: "place", map: "" };

function make(tag, attributes, ...children) {
  const element = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes || {}))
    if (name === "style")
      for (const [property, text] of Object.entries(value))
        element.style.setProperty(property, text);
    else
      element.setAttribute(name, value);
  element.append(...children);
  return element;
}

const lineOf = (photo) => photo.data.line;
const cropsOf = (photo) => lineOf(photo).crops;
const figure = (crop, name) => crop[name] ?? crop.scores[name];
const ratioOf = (box) => ({ "--ratio": String(box.width / box.height) });
const percent = (part, whole) => (100 * part / whole).toFixed(4) + "%";
const sizeText = (box) => box.width + " × " + box.height;
const plural = (count, one, many) => count.toLocaleString("en") + " " + (count === 1 ? one : many);

function place(element, box, photo) {
  const line = lineOf(photo);
  element.style.left = percent(box.x, line.width);
  element.style.top = percent(box.y, line.height);
  element.style.width = percent(box.width, line.width);
  element.style.height = percent(box.height, line.height);
  return element;
}

// A crop, drawn from the one picture of its photograph. No larger than that picture has pixels.
function drawnCrop(photo, crop, longSide) {
  const { picture } = photo;
  const scaleX = picture.naturalWidth / lineOf(photo).width;
  const scaleY = picture.naturalHeight / lineOf(photo).height;
  const shrink = Math.min(1, longSide / Math.max(crop.width * scaleX, crop.height * scaleY));
  const canvas = make("canvas", { role: "img", "aria-label": cropLabel(photo, crop) });
  canvas.width = Math.max(1, Math.round(crop.width * scaleX * shrink));
  canvas.height = Math.max(1, Math.round(crop.height * scaleY * shrink));
  const context = canvas.getContext("2d");
  context.imageSmoothingQuality = "high";
  context.drawImage(picture, crop.x * scaleX, crop.y * scaleY, crop.width * scaleX,
                    crop.height * scaleY, 0, 0, canvas.width, canvas.height);
  return canvas;
}

function cropLabel(photo, crop) {
  const index = cropsOf(photo).indexOf(crop);
  return "Crop " + (index + 1) + " of " + photo.name + ", " + photo.data.ratios[index];
}

// A sketch of where in the photograph a crop lies.
function sketch(photo, crop) {
  const line = lineOf(photo);
  const drawn = (tag, attributes) => {
    const element = document.createElementNS("http://www.w3.org/2000/svg", tag);
    for (const [name, value] of Object.entries(attributes))
      element.setAttribute(name, value);
    return element;
  };
  const svg = drawn("svg", { class: "where", viewBox: "0 0 " + line.width + " " + line.height,
                             "aria-hidden": "true" });
  const { x, y, width, height } = crop;
  svg.append(drawn("rect", { class: "part", x, y, width, height }),
             drawn("rect", { width: line.width, height: line.height }));
  return svg;
}

function thirds() {
  return make("div", { class: "thirds" }, make("i"), make("i"), make("i"), make("i"));
}

// ---- Reading the page

const pathOf = (article) => article.dataset.file.split("/");

function readPage() {
  measures = JSON.parse(byId("measures").textContent);
  for (const article of document.querySelectorAll("#photographs > .photo")) {
    const block = article.querySelector("script.data");
    const photo = { article, name: pathOf(article).slice(-1)[0], picked: new Set(),
                    picture: article.querySelector("img.whole"), data: null, error: "" };
    if (block)
      photo.data = JSON.parse(block.textContent);
    else
      photo.error = article.querySelector("p").textContent;
    photos.push(photo);
  }
}

// The choice outlives a reload, for as long as the page holds the same crops.
function storageKey() {
  let hash = 0;
  for (const photo of photos)
    for (const c of photo.data ? JSON.stringify([lineOf(photo).file, cropsOf(photo)]) : "")
      hash = (Math.imul(hash, 31) + c.codePointAt(0)) | 0;
  return "vistatrim-choice-" + (hash >>> 0).toString(16);
}

let choiceKey = "";

function loadChoice() {
  choiceKey = storageKey();
  try {
    const saved = JSON.parse(localStorage.getItem(choiceKey)) || {};
    for (const [index, ranks] of Object.entries(saved))
      for (const rank of ranks)
        if (photos[index]?.data && cropsOf(photos[index])[rank])
          photos[index].picked.add(rank);
  } catch (error) {
    // A browser may refuse to keep anything for a file; the choice then lasts as long as the page.
  }
}

function keepChoice() {
  const saved = {};
  photos.forEach((photo, index) => {
    if (photo.picked.size > 0)
      saved[index] = [...photo.picked];
  });
  try {
    localStorage.setItem(choiceKey, JSON.stringify(saved));
  } catch (error) {
    // As above.
  }
}

// ---- The choice

const pickedRanks = (photo) => [...photo.picked].sort((a, b) => a - b);

function choiceLines() {
  return photos.filter((photo) => photo.picked.size > 0).map((photo) =>
    jsonLine(photo, pickedRanks(photo).map((rank) => cropsOf(photo)[rank])));
}

function jsonLine(photo, crops) {
  const { file, width, height } = lineOf(photo);
  return JSON.stringify({ file, width, height, crops });
}

function showChoice() {
  const crops = photos.reduce((sum, photo) => sum + photo.picked.size, 0);
  byId("choice-count").textContent =
    crops === 0 ? "No crop chosen" : plural(crops, "crop", "crops") + " chosen";
  byId("choice-save").disabled = byId("choice-clear").disabled = crops === 0;
}

function choiceChanged() {
  keepChoice();
  showChoice();
  photos.forEach(dressTile);
  if (view.photo >= 0)
    showCrop();
}

function toggleChoice(photo, rank) {
  if (!photo.picked.delete(rank))
    photo.picked.add(rank);
  choiceChanged();
}

function saveChoice() {
  const text = choiceLines().join("\n") + "\n";
  const url = URL.createObjectURL(new Blob([text], { type: "application/json" }));
  make("a", { href: url, download: "choice.json" }).click();
  setTimeout(() => URL.revokeObjectURL(url), 10000);
}

// ---- The overview

function uniqueNames() {
  // Photographs of one name are told apart by the folder above them.
  const count = new Map();
  for (const photo of photos)
    count.set(photo.name, (count.get(photo.name) || 0) + 1);
  for (const photo of photos) {
    if (count.get(photo.name) > 1)
      photo.name = pathOf(photo.article).slice(-2).join("/");
  }
}

function frame(photo, crop, className) {
  return place(make("div", { class: className }), crop, photo);
}

function addTile(photo, index) {
  const name = make("span", { class: "name" }, photo.name);
  const about = make("span", { class: "about" });
  if (photo.error) {
    about.textContent = photo.error;
    photo.tile = make("li", { class: "failed" }, name, about);
  } else {
    const stage = make("div", { class: "stage" },
                       make("img", { class: "whole", alt: "", loading: "lazy", decoding: "async",
                                     src: photo.picture.src }));
    const link = make("a", { href: "#photo-" + (index + 1) }, stage, name, about);
    photo.tile = make("li", { style: ratioOf(lineOf(photo)) }, link);
    photo.tile.style.setProperty("--ratio",
      String(Math.min(3, Math.max(0.5, lineOf(photo).width / lineOf(photo).height))));
    stage.style.setProperty("--ratio", String(lineOf(photo).width / lineOf(photo).height));
  }
  byId("tiles").append(photo.tile);
  dressTile(photo);
}

// A tile shows the chosen crops, or the first one.
function dressTile(photo) {
  if (!photo.tile || photo.error)
    return;
  const crops = cropsOf(photo);
  const stage = photo.tile.querySelector(".stage");
  for (const old of stage.querySelectorAll(".frame"))
    old.remove();
  const ranks = pickedRanks(photo);
  const shown = ranks.length > 0 ? ranks : crops.length > 0 ? [0] : [];
  for (const rank of shown)
    stage.append(frame(photo, crops[rank], shown.length === 1 ? "frame shown" : "frame"));
  photo.tile.classList.toggle("chosen", ranks.length > 0);
  photo.tile.querySelector(".about").textContent =
    ranks.length > 0 ? "✓ " + ranks.length + " of " + plural(crops.length, "crop", "crops") +
                       " chosen"
                     : plural(crops.length, "crop", "crops");
}

const searchable = (text) => text.normalize("NFKD").replace(/\p{M}/gu, "").toLowerCase();

function search() {
  const words = searchable(byId("search").value).split(/\s+/);
  let found = 0;
  for (const photo of photos) {
    const fits = words.every((word) => searchable(photo.name).includes(word));
    photo.found = fits;
    photo.tile.hidden = !fits;
    photo.article.classList.toggle("left-out", !fits);
    found += fits ? 1 : 0;
  }
  byId("search-count").textContent = found === photos.length
    ? plural(found, "photograph", "photographs")
    : found + " of " + plural(photos.length, "photograph", "photographs");
}

// ---- One photograph

const current = () => photos[view.photo];
const currentCrop = () => cropsOf(current())[view.crop];

function neighbour(step) {
  for (let i = view.photo + step; i >= 0 && i < photos.length; i += step)
    if (photos[i].found && !photos[i].error)
      return i;
  return -1;
}

function setStep(link, index) {
  link.toggleAttribute("aria-disabled", index < 0);
  if (index < 0) {
    link.removeAttribute("href");
    link.setAttribute("aria-disabled", "true");
  } else {
    link.href = "#photo-" + (index + 1);
  }
}

function showPhoto(index) {
  view.photo = index;
  view.crop = 0;
  const photo = current();
  const line = lineOf(photo);
  document.title = photo.name + " – crop report";
  byId("viewer-title").textContent = photo.name;
  byId("viewer-size").textContent = sizeText(line);
  byId("step-count").textContent = (index + 1) + " of " + photos.length;
  setStep(byId("to-previous"), neighbour(-1));
  setStep(byId("to-next"), neighbour(1));
  const whole = byId("whole");
  whole.src = photo.picture.src;
  whole.alt = "Photograph " + photo.name;
  byId("stage").style.setProperty("--ratio", String(line.width / line.height));
  byId("viewer-note").textContent = photo.data.note;
  byId("details").hidden = cropsOf(photo).length === 0;
  byId("said").textContent = "";

  byId("frames").replaceChildren(...cropsOf(photo).map((crop, rank) => {
    const badge = make("button", { type: "button", class: "badge", tabindex: "-1",
                                   "data-rank": rank, "aria-label": "Show crop " + (rank + 1) },
                       String(rank + 1));
    const framed = frame(photo, crop, "frame");
    framed.append(badge);
    return framed;
  }));
  const { regions } = photo.data;
  byId("regions").replaceChildren(...regions.map((region) => {
    // The name stands below the region, or inside where there is no room below.
    const isLow = region.y + region.height > 0.9 * line.height;
    const box = frame(photo, region, isLow ? "region low" : "region");
    box.append(make("span", {}, region.label));
    return box;
  }));

  byId("strip").replaceChildren(...cropsOf(photo).map((crop, rank) => {
    const overlap = figure(crop, "expectedOverlap");
    const sizing = overlap === undefined
      ? [sizeText(crop)] : [make("span", { class: "word" }, "overlap "), overlap.toFixed(2)];
    const thumb = drawnCrop(photo, crop, 320);
    thumb.setAttribute("aria-hidden", "true");
    return make("button", { type: "button", role: "radio", "data-rank": rank },
                make("span", { class: "thumb" }, thumb),
                make("span", { class: "about" },
                     make("b", {}, (rank + 1) + " · " + photo.data.ratios[rank]),
                     sketch(photo, crop), make("em", {}, ...sizing)));
  }));
  fillMaps(photo);
  showCrop();
  placeBadges();
}

function showCrop() {
  const photo = current();
  const crops = cropsOf(photo);
  [...byId("frames").children].forEach((framed, rank) => {
    const shown = rank === view.crop;
    framed.classList.toggle("shown", shown);
    framed.firstChild.classList.toggle("shown", shown);
    framed.firstChild.classList.toggle("picked", photo.picked.has(rank));
    for (const old of framed.querySelectorAll(".thirds"))
      old.remove();
    if (shown && isOn("thirds"))
      framed.append(thirds());
  });
  [...byId("strip").children].forEach((button, rank) => {
    const shown = rank === view.crop;
    button.setAttribute("aria-checked", String(shown));
    button.tabIndex = shown ? 0 : -1;
    button.classList.toggle("picked", photo.picked.has(rank));
    button.setAttribute("aria-label", "Crop " + (rank + 1) + ", " + photo.data.ratios[rank] +
                        (photo.picked.has(rank) ? ", chosen" : ""));
  });
  if (crops.length > 0)
    showDetails(photo, currentCrop());
  showMode();
}

function showDetails(photo, crop) {
  const line = lineOf(photo);
  const share = Math.round(100 * crop.width * crop.height / (line.width * line.height));
  byId("details-title").textContent = "Crop " + (view.crop + 1) + " · " +
                                      photo.data.ratios[view.crop];
  byId("details-text").textContent = sizeText(crop) + " at " + crop.x + ", " + crop.y + " · " +
    share + " % of the photograph" + (crop.coversContent ? " · covers the content" : "");
  byId("details-regions").textContent = regionText(photo, crop);
  const picked = photo.picked.has(view.crop);
  byId("choose").setAttribute("aria-pressed", String(picked));
  byId("choose").textContent = picked ? "✓ Chosen" : "Choose crop";
  const open = new Set([...byId("scores").querySelectorAll("details[open]")]
    .map((score) => score.dataset.score));
  byId("scores").replaceChildren(...measures.flatMap(({ name, label, text }) => {
    const value = figure(crop, name);
    if (value === undefined || (name === "roi" && value === 1))
      return [];
    return [scoreRow(photo, name, label, text, value, open.has(name))];
  }));
}

function scoreRow(photo, name, label, text, value, open) {
  const rank = photo.data.ranks?.[view.crop]?.[name];
  const full = rank === undefined ? text : text + " This crop is at least as good as " +
    Math.floor(100 * rank) + " % of the " + plural(photo.data.candidates, "crop", "crops") +
    " tried.";
  const fill = make("i", { style: { width: percent(Math.min(1, Math.max(0, value)), 1) } });
  const row = make("details", { class: "score", "data-score": name },
                   make("summary", {}, make("span", {}, label),
                        make("span", { class: "track" }, fill), make("b", {}, value.toFixed(2))),
                   make("p", {}, full));
  row.open = open;
  return row;
}

// Which regions the crop holds, cuts and leaves out, in words.
function regionText(photo, crop) {
  const kinds = { Holds: [], Cuts: [], "Leaves out": [] };
  for (const region of photo.data.regions) {
    const wide = Math.min(crop.x + crop.width, region.x + region.width) -
                 Math.max(crop.x, region.x);
    const high = Math.min(crop.y + crop.height, region.y + region.height) -
                 Math.max(crop.y, region.y);
    const kind = wide <= 0 || high <= 0 ? "Leaves out"
      : wide === region.width && high === region.height ? "Holds" : "Cuts";
    kinds[kind].push(region.label);
  }
  const counted = (labels) => [...new Set(labels)].map((label) => {
    const count = labels.filter((other) => other === label).length;
    return count > 1 ? label + " × " + count : label;
  });
  return Object.entries(kinds).filter(([, labels]) => labels.length > 0)
    .map(([kind, labels]) => kind + ": " + counted(labels).join(", ")).join(" · ");
}

// Every badge stands in a corner of its own frame; the first corner whose place is still free.
function placeBadges() {
  const badges = [...byId("frames").querySelectorAll(".badge")];
  if (badges.length === 0)
    return;
  const size = badges[0].offsetWidth;
  const taken = [];
  const isFree = (x, y) => taken.every(([a, b]) =>
    Math.abs(a - x) >= size + 1 || Math.abs(b - y) >= size + 1);
  for (const badge of badges) {
    const box = badge.parentElement;
    const left = box.offsetLeft, top = box.offsetTop;
    const right = left + box.offsetWidth - size, bottom = top + box.offsetHeight - size;
    let [x, y, sides] = [[left, top, "at-left at-top"], [right, top, "at-right at-top"],
                         [left, bottom, "at-left at-bottom"], [right, bottom, "at-right at-bottom"]]
      .find(([cornerX, cornerY]) => isFree(cornerX, cornerY)) || [left, top, "at-left at-top"];
    // With all four taken, the next free place along the top or, failing that, the left side.
    let shiftX = 0, shiftY = 0;
    while (!isFree(x + shiftX, y) && x + shiftX + size < right)
      shiftX += size + 1;
    if (!isFree(x + shiftX, y))
      for (shiftX = 0; !isFree(x, y + shiftY) && y + shiftY + size < bottom;)
        shiftY += size + 1;
    badge.className = badge.className.replace(/ ?at-\w+/g, "") + " " + sides;
    badge.style.margin = shiftX + shiftY > 0 ? shiftY + "px 0 0 " + shiftX + "px" : "";
    taken.push([x + shiftX, y + shiftY]);
  }
}

function shot(photo, crop) {
  const box = make("div", { class: "shot", style: ratioOf(crop) });
  box.append(drawnCrop(photo, crop, 4096));
  if (isOn("thirds"))
    box.append(thirds());
  return box;
}

function showMode() {
  const photo = current();
  const mode = cropsOf(photo).length > 0 ? view.mode : "place";
  for (const button of byId("views").children) {
    const chosen = button.dataset.view === mode;
    button.setAttribute("aria-checked", String(chosen));
    button.tabIndex = chosen ? 0 : -1;
  }
  byId("stage").hidden = mode !== "place";
  byId("alone").hidden = mode === "place";
  byId("outlines").hidden = mode !== "place" || cropsOf(photo).length < 2;
  byId("show-regions").hidden = mode !== "place" || photo.data.regions.length === 0;
  byId("map-tools").hidden = byId("map-text").hidden =
    mode !== "place" || mapsOf(photo).length === 0;
  byId("alone").classList.toggle("pair", mode === "compare");
  const parts = [];
  if (mode === "compare") {
    const original = make("div", { class: "shot", style: ratioOf(lineOf(photo)) },
                          make("img", { src: photo.picture.src, alt: "Photograph " + photo.name }));
    parts.push(make("figure", {}, original, make("figcaption", {}, "Original")));
  }
  if (mode !== "place")
    parts.push(make("figure", {}, shot(photo, currentCrop()),
                    make("figcaption", {}, "Crop " + (view.crop + 1))));
  byId("alone").replaceChildren(...parts);
}

// Crops overlap: of those under the pointer the first one is taken, and with every further click
// the next.
function chooseAt(x, y) {
  const under = [];
  [...byId("frames").children].forEach((framed, rank) => {
    const box = framed.getBoundingClientRect();
    if (x >= box.left && x <= box.right && y >= box.top && y <= box.bottom)
      under.push(rank);
  });
  if (under.length > 0)
    selectCrop(under[(under.indexOf(view.crop) + 1) % under.length]);
}

function selectCrop(rank) {
  view.crop = rank;
  byId("said").textContent = "";
  showCrop();
}

// ---- Maps: a small grey picture each, coloured here

// From clear violet over red to opaque yellow: weak places let the photograph through, strong
// ones glow.
function glowTable() {
  const stops = [[60, 0, 120, 0], [200, 20, 110, 150], [255, 110, 20, 215], [255, 240, 90, 255]];
  const table = [];
  for (let value = 0; value < 256; ++value) {
    const at = value / 85;
    const below = Math.min(2, Math.floor(at));
    table.push(stops[below].map((from, band) =>
      Math.round(from + (stops[below + 1][band] - from) * (at - below))));
  }
  return table;
}

// Read when a photograph is shown, since they are most of its data.
function mapsOf(photo) {
  const block = photo.article.querySelector("script.maps");
  if (!photo.maps)
    photo.maps = block ? JSON.parse(block.textContent) : [];
  return photo.maps;
}

function mapText(name) {
  return kMaps[name] || [name, ""];
}

function fillMaps(photo) {
  const maps = mapsOf(photo);
  const choice = byId("map-choice");
  choice.replaceChildren(make("option", { value: "" }, "none"), ...maps.map((map) =>
    make("option", { value: map.name }, mapText(map.name)[0])));
  if (!maps.some((map) => map.name === view.map))
    view.map = "";
  choice.value = view.map;
  showMap();
}

async function showMap() {
  const name = view.map;
  const photo = current();
  const map = mapsOf(photo).find((candidate) => candidate.name === name);
  byId("map-text").textContent = map ? mapText(name)[1] + " Bright is strong." : "";
  byId("stage").classList.toggle("mapped", Boolean(map));
  byId("strength").disabled = !map;
  const canvas = byId("map");
  canvas.hidden = true;
  if (!map)
    return;
  const grey = new Image();
  grey.src = map.picture;
  await grey.decode();
  if (view.map !== name || current() !== photo)
    return; // something else was asked for meanwhile
  canvas.width = grey.naturalWidth;
  canvas.height = grey.naturalHeight;
  const context = canvas.getContext("2d", { willReadFrequently: true });
  context.drawImage(grey, 0, 0);
  const pixels = context.getImageData(0, 0, canvas.width, canvas.height);
  const table = glowTable();
  for (let i = 0; i < pixels.data.length; i += 4)
    pixels.data.set(table[pixels.data[i]], i);
  context.putImageData(pixels, 0, 0);
  canvas.hidden = false;
  canvas.dataset.map = name;
}

function selectMap(name) {
  view.map = name;
  byId("map-choice").value = name;
  showMap();
}

// ---- Copying

async function copy(text, said) {
  try {
    await navigator.clipboard.writeText(text);
  } catch (error) {
    // Older browsers, or one that does not trust a file.
    const field = make("textarea", { class: "skip", "aria-hidden": "true" });
    field.value = text;
    document.body.append(field);
    field.select();
    document.execCommand("copy");
    field.remove();
  }
  byId("said").textContent = said + ": " + text;
}

function coordinates(crop) {
  return [crop.x, crop.y, crop.width, crop.height].join(",");
}

// In single quotes a shell takes everything literally but the single quote itself.
const quoted = (text) => "'" + text.replaceAll("'", "'\\''") + "'";

function command(photo, crop) {
  const { x, y, width, height } = crop;
  return "printf '%s\\n' " + quoted(jsonLine(photo, [{ x, y, width, height }])) +
         " | vistatrim crop --from - -o crops";
}

// ---- Where we are

const isOn = (id) => byId(id).getAttribute("aria-pressed") === "true";

function flip(id) {
  byId(id).setAttribute("aria-pressed", String(!isOn(id)));
  byId("stage").classList.toggle("outlined", isOn("outlines"));
  byId("regions").hidden = !isOn("show-regions");
  showCrop();
}

async function readAddress(moveFocus) {
  const match = /^#photo-(\d+)$/.exec(location.hash);
  const index = match ? Number(match[1]) - 1 : photos.length === 1 ? 0 : -1;
  const photo = photos[index];
  const from = view.photo;
  if (photo?.data) {
    // Crops are drawn from the picture, which lies in the page but is decoded after it.
    const address = location.hash;
    await photo.picture.decode().catch(() => {});
    if (location.hash !== address)
      return;
    byId("overview").hidden = true;
    byId("viewer").hidden = false;
    showPhoto(index);
    scrollTo(0, 0);
    if (moveFocus)
      byId("viewer-title").focus({ preventScroll: true });
  } else {
    byId("overview").hidden = false;
    byId("viewer").hidden = true;
    view.photo = -1;
    document.title = "Crop report";
    const link = from >= 0 && photos[from].tile.querySelector("a");
    if (link && moveFocus)
      link.focus();
  }
}

function goTo(index) {
  if (index >= 0)
    location.hash = "#photo-" + (index + 1);
}

// ---- Keys

// Within a radio group the arrow keys go from one to the next, round the ends.
function stepInGroup(group, event) {
  const step = { ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1 }[event.key];
  const end = { Home: 0, End: group.children.length - 1 }[event.key];
  if (step === undefined && end === undefined)
    return false;
  const at = [...group.children].indexOf(event.target.closest("[role=radio]"));
  const next = end ?? (at + step + group.children.length) % group.children.length;
  group.children[next].click();
  group.children[next].focus();
  event.preventDefault();
  return true;
}

function onKey(event) {
  if (event.ctrlKey || event.altKey || event.metaKey)
    return;
  const group = event.target.closest("[role=radiogroup]");
  if (group && stepInGroup(group, event))
    return;
  const isField = event.target.matches("input:not([type=checkbox]), select, textarea");
  if (event.key === "Escape") {
    if (isField && event.target.value && view.photo < 0) {
      event.target.value = "";
      search();
    } else if (view.photo >= 0 && photos.length > 1) {
      location.hash = "#overview";
    }
    return;
  }
  if (isField || !byId("keys-on").checked)
    return;
  if (singleKey(event.key))
    event.preventDefault();
}

function singleKey(key) {
  if (key === "/") {
    if (view.photo >= 0)
      location.hash = "#overview";
    setTimeout(() => byId("search").focus());
    return true;
  }
  if (view.photo < 0)
    return false;
  const crops = cropsOf(current());
  const rank = /^[1-9]$/.test(key) ? Number(key) - 1 : -1;
  if (rank >= 0) {
    if (rank < crops.length)
      selectCrop(rank);
    return true;
  }
  const maps = ["", ...mapsOf(current()).map((map) => map.name)];
  const modes = ["place", "crop", "compare"];
  const act = {
    ArrowLeft: () => goTo(neighbour(-1)),
    ArrowRight: () => goTo(neighbour(1)),
    x: () => crops.length > 0 && toggleChoice(current(), view.crop),
    t: () => flip("thirds"),
    o: () => flip("outlines"),
    r: () => flip("show-regions"),
    v: () => setMode(modes[(modes.indexOf(view.mode) + 1) % modes.length]),
    m: () => view.mode === "place" && selectMap(maps[(maps.indexOf(view.map) + 1) % maps.length])
  }[key.length === 1 ? key.toLowerCase() : key];
  if (act)
    act();
  return Boolean(act);
}

function setMode(mode) {
  view.mode = mode;
  showMode();
  if (mode === "place")
    placeBadges();
}

// ---- Printing: the plain list, with the crops as pictures

function beforePrint() {
  photos.forEach((photo, index) => {
    const isPrinted = view.photo < 0 ? photo.found : index === view.photo;
    photo.article.classList.toggle("left-out", !isPrinted);
    if (photo.data && isPrinted)
      [...photo.article.querySelectorAll(".list li")].forEach((item, rank) =>
        item.prepend(drawnCrop(photo, cropsOf(photo)[rank], 360)));
  });
}

function afterPrint() {
  for (const canvas of document.querySelectorAll("#photographs canvas"))
    canvas.remove();
}

// ---- Start

function listen() {
  byId("search").addEventListener("input", search);
  byId("choose-first").addEventListener("click", () => {
    for (const photo of photos)
      if (photo.found && photo.data && cropsOf(photo).length > 0 && photo.picked.size === 0)
        photo.picked.add(0);
    choiceChanged();
  });
  byId("choice-save").addEventListener("click", saveChoice);
  byId("choice-clear").addEventListener("click", () => {
    photos.forEach((photo) => photo.picked.clear());
    choiceChanged();
  });
  byId("frames").addEventListener("click", (event) => {
    const badge = event.target.closest(".badge");
    if (badge)
      selectCrop(Number(badge.dataset.rank));
    event.stopPropagation();
  });
  byId("stage").addEventListener("click", (event) => chooseAt(event.clientX, event.clientY));
  byId("strip").addEventListener("click", (event) => {
    const button = event.target.closest("button");
    if (button)
      selectCrop(Number(button.dataset.rank));
  });
  // Pointing at a crop's card or badge outlines its frame.
  for (const [id, kind] of [["strip", "button"], ["frames", ".badge"]])
    for (const type of ["pointerover", "pointerout", "focusin", "focusout"])
      byId(id).addEventListener(type, (event) => {
        const over = event.target.closest(kind);
        const isNear = type === "pointerover" || type === "focusin";
        if (over)
          byId("frames").children[over.dataset.rank].classList.toggle("near", isNear);
      });
  byId("views").addEventListener("click", (event) => {
    if (event.target.dataset.view)
      setMode(event.target.dataset.view);
  });
  for (const id of ["thirds", "outlines", "show-regions"])
    byId(id).addEventListener("click", () => flip(id));
  byId("map-choice").addEventListener("change", (event) => selectMap(event.target.value));
  byId("strength").addEventListener("input", (event) => {
    byId("map").style.opacity = event.target.value / 100;
  });
  byId("choose").addEventListener("click", () => toggleChoice(current(), view.crop));
  byId("copy-coordinates").addEventListener("click", () =>
    copy(coordinates(currentCrop()), "Copied"));
  byId("copy-command").addEventListener("click", () =>
    copy(command(current(), currentCrop()), "Copied"));
  document.addEventListener("keydown", onKey);
  addEventListener("hashchange", () => readAddress(true));
  addEventListener("beforeprint", beforePrint);
  addEventListener("afterprint", afterPrint);
  new ResizeObserver(placeBadges).observe(byId("stage"));
}

document.addEventListener("DOMContentLoaded", () => {
  readPage();
  uniqueNames();
  loadChoice();
  photos.forEach(addTile);
  search();
  showChoice();
  byId("map").style.opacity = byId("strength").value / 100;
  byId("to-overview").hidden = photos.length === 1;
  listen();
  readAddress(false);
});
