"use strict";
// The page's data and helpers that all parts of the script share.
//
// Each photograph is an <article>: a picture, a plain list of its crops, and blocks of JSON with
// everything else. This script reads them and shows them as a grid or one at a time. Texts from
// the data are only ever set as text, never as markup.
document.documentElement.classList.add("js");

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
