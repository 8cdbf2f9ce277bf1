// The crops that people choose, and the file that they are saved to.

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
