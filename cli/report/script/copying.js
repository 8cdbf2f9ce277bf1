// Coordinates and command lines for the clipboard.

async function copy(text, said) {
  try {
    await navigator.clipboard.writeText(text);
  } catch (error) {
    // For older browsers and those that deny the clipboard to files.
    const field = make("textarea", { class: "skip", "aria-hidden": "true" });
    field.value = text;
    document.body.append(field);
    field.select();
    document.execCommand("copy");
    field.remove();
  }
  byId("said").textContent = said + ": " + text;
}

function coordinates(crop) {
  return [crop.x, crop.y, crop.width, crop.height].join(",");
}

// In single quotes a shell takes everything literally but the single quote itself.
const quoted = (text) => "'" + text.replaceAll("'", "'\\''") + "'";

function command(photo, crop) {
  const { x, y, width, height } = crop;
  return "printf '%s\\n' " + quoted(jsonLine(photo, [{ x, y, width, height }])) +
         " | vistatrim crop --from - -o crops";
}
