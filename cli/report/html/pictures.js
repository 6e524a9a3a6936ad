import { pictureFile } from "./data.js";
import { button, el } from "./dom.js";
import { countOf, decodeText, grouped } from "./text.js";

const MOST_PIXELS = 40_000_000; // of a picture that is decoded: 160 MB
const BLINK_MILLISECONDS = 700;

/** The size that a PNG file declares, before anything is decoded. */
async function declaredSize(file) {
  const header = new DataView(await file.slice(0, 24).arrayBuffer());
  if (header.byteLength < 24 || header.getUint32(12) !== 0x49484452 /* IHDR */) {
    throw new Error("it is no PNG file");
  }
  return { width: header.getUint32(16), height: header.getUint32(20) };
}

async function decode(id) {
  const file = pictureFile(id);
  const { width, height } = await declaredSize(file);
  if (width * height > MOST_PIXELS) {
    throw new Error(`it declares ${grouped(width)} × ${grouped(height)} pixels`);
  }
  return createImageBitmap(file, { colorSpaceConversion: "none", premultiplyAlpha: "none" });
}

function canvasOf(width, height, label) {
  return el("canvas", { width, height, role: "img", "aria-label": label });
}

function pixelsOf(picture, width, height) {
  const canvas = new OffscreenCanvas(width, height);
  const context = canvas.getContext("2d", { willReadFrequently: true });
  context.drawImage(picture, 0, 0);
  return new Uint32Array(context.getImageData(0, 0, width, height).data.buffer);
}

/** Where two pictures differ: a mask of 1s, how many there are, and the box around them. */
function comparePixels(master, output) {
  const width = Math.max(master.width, output.width);
  const height = Math.max(master.height, output.height);
  const a = pixelsOf(master, width, height);
  const b = pixelsOf(output, width, height);
  const mask = new Uint8Array(width * height);
  const box = { left: width, top: height, right: -1, bottom: -1 };
  let count = 0;
  for (let y = 0, i = 0; y < height; ++y) {
    for (let x = 0; x < width; ++x, ++i) {
      const isOutside = x >= master.width || y >= master.height || x >= output.width || y >= output.height;
      if (isOutside || a[i] !== b[i]) {
        mask[i] = 1;
        ++count;
        box.left = Math.min(box.left, x);
        box.right = Math.max(box.right, x);
        box.top = Math.min(box.top, y);
        box.bottom = y;
      }
    }
  }
  return { width, height, mask, count, box };
}

/** The output, faded, with all pixels that differ in one strong colour. */
function differenceCanvas(output, found) {
  const canvas = canvasOf(found.width, found.height, "Pixels that differ");
  const context = canvas.getContext("2d");
  context.globalAlpha = 0.25;
  context.drawImage(output, 0, 0);
  const image = context.getImageData(0, 0, found.width, found.height);
  const pixels = new Uint32Array(image.data.buffer);
  const MAGENTA = 0xff8000d0; // alpha, blue, green, red
  found.mask.forEach((differs, i) => differs && (pixels[i] = MAGENTA));
  context.putImageData(image, 0, 0);
  return canvas;
}

function drawn(picture, label) {
  const canvas = canvasOf(picture.width, picture.height, label);
  canvas.getContext("2d").drawImage(picture, 0, 0);
  return canvas;
}

function countText(master, output, found) {
  const sizes =
    master.width === output.width && master.height === output.height
      ? `${grouped(master.width)} × ${grouped(master.height)} pixels`
      : `master ${grouped(master.width)} × ${grouped(master.height)}, output ${grouped(output.width)} × ${grouped(output.height)} pixels`;
  if (found.count === 0) {
    return `${sizes}; the pixels are the same, only the bytes of the files differ.`;
  }
  const share = (100 * found.count) / (found.width * found.height);
  const { left, top, right, bottom } = found.box;
  return (
    `${countOf(found.count, "pixel")} of ${sizes} ${found.count === 1 ? "differs" : "differ"} (${share < 0.01 ? "less than 0.01" : share.toFixed(2)} %), ` +
    `between ${left},${top} and ${right},${bottom}.`
  );
}

/** One way of looking at two pictures: makes the elements, and says what to do when it is left. */
const MODES = {
  "Side by side": ({ master, output }) => ({
    nodes: [
      el("figure", {}, el("figcaption", {}, "Master"), drawn(master, "Master")),
      el("figure", {}, el("figcaption", {}, "Output"), drawn(output, "Output")),
    ],
  }),
  Overlay: ({ master, output }) => {
    const top = drawn(output, "Output");
    const stack = el("div.stack", {}, drawn(master, "Master"), top);
    const slide = el("input", {
      type: "range",
      min: 0,
      max: 100,
      value: 50,
      "aria-label": "Share of the output",
      oninput: () => (top.style.clipPath = `inset(0 0 0 ${100 - slide.value}%)`),
    });
    top.style.clipPath = "inset(0 0 0 50%)";
    return {
      nodes: [
        el("figure", {}, el("figcaption", {}, "Master left, output right of the edge ", slide), stack),
      ],
    };
  },
  Blink: ({ master, output }) => {
    const top = drawn(output, "Output");
    const caption = el("span", {}, "Output");
    const swap = () => {
      if (!top.isConnected) {
        stop(); // the reader has left
      }
      top.hidden = !top.hidden;
      caption.textContent = top.hidden ? "Master" : "Output";
    };
    const isStill = matchMedia("(prefers-reduced-motion: reduce)").matches;
    const timer = isStill ? 0 : setInterval(swap, BLINK_MILLISECONDS);
    const stop = () => clearInterval(timer);
    const step = button("Swap", () => {
      stop();
      swap();
    });
    return {
      nodes: [
        el(
          "figure",
          {},
          el("figcaption", {}, caption, " ", step),
          el("div.stack", {}, drawn(master, "Master"), top),
        ),
      ],
      leave: stop,
    };
  },
  Difference: ({ output, found }) => ({
    nodes: [
      el(
        "figure",
        {},
        el("figcaption", {}, "Pixels that differ, in magenta"),
        differenceCanvas(output, found),
      ),
    ],
  }),
};

/** Shows two pictures, with switches for how. */
class PicturePair {
  constructor(view) {
    this.view = view;
    this.stage = el("div.stage", { tabindex: 0, role: "group", "aria-label": "Pictures" });
    this.caption = el("p.note", {}, "Decoding …");
    this.zoom = 1;
    this.modes = Object.keys(MODES).map((name) =>
      button(name, () => this.show(name), { "aria-pressed": "false" }),
    );
    this.zoomText = el("output", {}, "100 %");
  }

  element() {
    const zoom = (factor) => () => this.setZoom(factor ? this.zoom * factor : 1);
    const label = decodeText(this.view.label);
    const root = el(
      "div.pictures",
      {},
      label ? el("h3", {}, label) : null,
      el(
        "div.switches",
        { role: "group", "aria-label": "How to compare the pictures" },
        this.modes,
        el(
          "span.zoom",
          {},
          button("−", zoom(0.5), { "aria-label": "Smaller" }),
          this.zoomText,
          button("+", zoom(2), { "aria-label": "Larger" }),
          button("1:1", zoom(0), { "aria-label": "Original size" }),
        ),
      ),
      this.caption,
      this.stage,
    );
    this.load();
    return root;
  }

  async load() {
    try {
      const [master, output] = await Promise.all([decode(this.view.master), decode(this.view.output)]);
      this.pictures = { master, output, found: comparePixels(master, output) };
      this.caption.textContent = countText(master, output, this.pictures.found);
      this.show("Side by side");
    } catch (error) {
      this.caption.textContent = `This picture cannot be shown: ${error.message}.`;
      this.modes.forEach((mode) => (mode.disabled = true));
    }
  }

  show(name) {
    this.leave?.();
    const { nodes, leave } = MODES[name](this.pictures);
    this.leave = leave;
    this.stage.replaceChildren(...nodes);
    this.modes.forEach((mode) => mode.setAttribute("aria-pressed", String(mode.textContent === name)));
    this.setZoom(this.zoom);
  }

  setZoom(zoom) {
    this.zoom = Math.min(16, Math.max(1 / 16, zoom));
    this.zoomText.textContent = `${Number((100 * this.zoom).toFixed(1))} %`;
    for (const canvas of this.stage.querySelectorAll("canvas")) {
      canvas.style.width = this.zoom === 1 ? "" : `${canvas.width * this.zoom}px`;
      canvas.style.maxWidth = this.zoom === 1 ? "" : "none";
    }
  }
}

/** The pictures of a pair: one, or the pages of a document. */
export function pictureViewer({ views, notes }) {
  return el(
    "div",
    {},
    views.map((view) => new PicturePair(view).element()),
    notes.map((note) => el("p.note", {}, decodeText(note))),
  );
}
