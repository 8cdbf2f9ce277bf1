// Keyboard control.

// Within a radio group the arrow keys move from one button to the next and wrap around.
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
