// The address decides what is shown, so that Back and links work.

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
    // Crops are drawn from the picture, which is embedded in the page but decoded later.
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
