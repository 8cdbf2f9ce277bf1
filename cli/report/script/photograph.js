// One photograph with its crops.

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
    // The name goes below the region, or inside if there is no room below.
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
  const part = 100 * crop.width * crop.height / (line.width * line.height);
  const share = part < 1 ? "less than 1" : Math.round(part);
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

// Puts every badge into the first corner of its frame that is still free.
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
    // If all four are taken, the next free place along the top or, failing that, the left side.
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

// Crops overlap: a click takes the first crop under the pointer, every further click the next.
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
