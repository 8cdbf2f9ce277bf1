"use strict";
// Everything hangs on data-crop and data-map inside one section; there is no other state.
function choose(section, crop) {
  for (const element of section.querySelectorAll("[data-crop]"))
    element.classList.toggle("chosen", element.dataset.crop === crop);
}

function chosenCrop(section) {
  const card = section.querySelector(".card.chosen");
  return card ? Number(card.dataset.crop) : -1;
}

function toggleMap(section, name) {
  let shown = false;
  for (const button of section.querySelectorAll("button[data-map]")) {
    const pressed = button.dataset.map === name && button.getAttribute("aria-pressed") === "false";
    button.setAttribute("aria-pressed", String(pressed));
    section.querySelector('.map[data-map="' + button.dataset.map + '"]').hidden = !pressed;
    shown = shown || pressed;
  }
  section.querySelector(".stage").classList.toggle("mapped", shown);
}

// Crops overlap: of those under the pointer the first one is taken, and with every further click
// the next.
function chooseAt(section, x, y) {
  const under = [];
  for (const frame of section.querySelectorAll(".frame")) {
    const box = frame.getBoundingClientRect();
    if (x >= box.left && x <= box.right && y >= box.top && y <= box.bottom)
      under.push(frame.dataset.crop);
  }
  if (under.length > 0)
    choose(section, under[(under.indexOf(String(chosenCrop(section))) + 1) % under.length]);
}

document.addEventListener("click", (event) => {
  const section = event.target.closest(".photo");
  if (!section)
    return;
  const map = event.target.closest("button[data-map]");
  const crop = event.target.closest("[data-crop]");
  if (map)
    toggleMap(section, map.dataset.map);
  else if (crop)
    choose(section, crop.dataset.crop);
  else if (event.target.closest(".stage"))
    chooseAt(section, event.clientX, event.clientY);
});

document.addEventListener("keydown", (event) => {
  const section = event.target.closest ? event.target.closest(".photo") : null;
  if (!section || event.target.tagName === "INPUT")
    return;
  const cards = section.querySelectorAll(".card");
  const step = { ArrowDown: 1, ArrowRight: 1, ArrowUp: -1, ArrowLeft: -1 }[event.key];
  if (step && cards.length > 0) {
    const next = (chosenCrop(section) + step + cards.length) % cards.length;
    choose(section, String(next));
    cards[next].focus();
    event.preventDefault();
  } else if (event.key === "Enter" && event.target.matches(".card")) {
    choose(section, event.target.dataset.crop);
  }
});

document.addEventListener("input", (event) => {
  const section = event.target.closest(".photo");
  if (section && event.target.type === "range")
    for (const map of section.querySelectorAll(".map"))
      map.style.opacity = event.target.value / 100;
});

for (const section of document.querySelectorAll(".photo")) {
  choose(section, "0");
  for (const map of section.querySelectorAll(".map"))
    map.style.opacity = 0.85;
}
