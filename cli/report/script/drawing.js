// Frames, crops, sketches and lines that are laid over photographs.

function place(element, box, photo) {
  const line = lineOf(photo);
  element.style.left = percent(box.x, line.width);
  element.style.top = percent(box.y, line.height);
  element.style.width = percent(box.width, line.width);
  element.style.height = percent(box.height, line.height);
  return element;
}

// A crop drawn from its photograph's picture, never larger than the picture's own pixels.
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
