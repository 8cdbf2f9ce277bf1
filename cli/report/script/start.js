// Sets the page up once it has loaded.

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
