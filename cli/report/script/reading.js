// Reads the page's data and the choice saved by an earlier visit.

const pathOf = (article) => article.dataset.file.split("/");

function readPage() {
  measures = JSON.parse(byId("measures").textContent);
  for (const article of document.querySelectorAll("#photographs > .photo")) {
    const block = article.querySelector("script.data");
    const photo = { article, name: pathOf(article).slice(-1)[0], picked: new Set(),
                    picture: article.querySelector("img.whole"), data: null, error: "" };
    if (block)
      photo.data = JSON.parse(block.textContent);
    else
      photo.error = article.querySelector("p").textContent;
    photos.push(photo);
  }
}

// The choice survives a reload as long as the page holds the same crops.
function storageKey() {
  let hash = 0;
  for (const photo of photos)
    for (const c of photo.data ? JSON.stringify([lineOf(photo).file, cropsOf(photo)]) : "")
      hash = (Math.imul(hash, 31) + c.codePointAt(0)) | 0;
  return "vistatrim-choice-" + (hash >>> 0).toString(16);
}

let choiceKey = "";

function loadChoice() {
  choiceKey = storageKey();
  try {
    const saved = JSON.parse(localStorage.getItem(choiceKey)) || {};
    for (const [index, ranks] of Object.entries(saved))
      for (const rank of ranks)
        if (photos[index]?.data && cropsOf(photos[index])[rank])
          photos[index].picked.add(rank);
  } catch (error) {
    // Browsers may deny storage to files; the choice then lasts until the page is closed.
  }
}

function keepChoice() {
  const saved = {};
  photos.forEach((photo, index) => {
    if (photo.picked.size > 0)
      saved[index] = [...photo.picked];
  });
  try {
    localStorage.setItem(choiceKey, JSON.stringify(saved));
  } catch (error) {
    // As above.
  }
}
