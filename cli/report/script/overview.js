// The grid of all photographs and the search.

function uniqueNames() {
  // Photographs of the same name are distinguished by their folder.
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
    // As high as the tiles of its row, and as the usual photograph wide.
    photo.tile = make("li", { class: "failed", style: { "--ratio": "1.5" } },
                      make("div", { class: "stage" }), name, about);
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
