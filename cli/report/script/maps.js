// Maps: each is a small grey picture that this script colours.

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

// Read only when a photograph is shown, since maps are most of its data.
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
    return; // another map was requested meanwhile
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
