// Prints the plain list, with the crops as pictures.

function beforePrint() {
  photos.forEach((photo, index) => {
    const isPrinted = view.photo < 0 ? photo.found : index === view.photo;
    photo.article.classList.toggle("left-out", !isPrinted);
    if (photo.data && isPrinted)
      [...photo.article.querySelectorAll(".list li")].forEach((item, rank) =>
        item.prepend(drawnCrop(photo, cropsOf(photo)[rank], 360)));
  });
}

function afterPrint() {
  for (const canvas of document.querySelectorAll("#photographs canvas"))
    canvas.remove();
}
