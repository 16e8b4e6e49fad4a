'use strict';

// What both pages do with a finished diagram: tell its height, paint it, and tell what went wrong.
const nomely = {
  post(handler, value) {
    window.__nomelyPost(handler, value);
  },

  fail(error) {
    const message = error.message || String(error);
    const box = document.createElement('pre');
    box.className = 'error';
    box.textContent = message;
    document.querySelector('.wrap').replaceChildren(box);
    nomely.post('mermaidHeight', box.getBoundingClientRect().height);
    nomely.post(error === nomely.nothing ? 'mermaidNothing' : 'mermaidError', message);
  },

  // Limits of a picture: `height` in points, pixels of an edge that a software renderer can place, and
  // pixels in all.
  limits: { height: 20000, edge: 16384, pixels: 24e6 },

  // Thrown for a diagram with nothing to be seen.
  nothing: new Error('Nothing to be seen.'),

  async paint() {
    const svg = document.querySelector('#diagram svg');
    const box = svg ? svg.getBoundingClientRect() : { width: 0, height: 0 };
    if (box.height <= 10) throw nomely.nothing;
    const wrap = document.querySelector('.wrap').getBoundingClientRect();
    nomely.post('mermaidHeight', wrap.height);

    const shrink = Math.min(1, nomely.limits.height / wrap.height);
    const width = Math.max(1, Math.ceil(box.width * shrink));
    const height = wrap.height * shrink;
    const scale = Math.min(window.__nomelyScale, nomely.limits.edge / width, nomely.limits.edge / height,
                           Math.sqrt(nomely.limits.pixels / (width * height)));
    const canvas = document.createElement('canvas');
    canvas.width = Math.max(1, Math.round(width * scale));
    canvas.height = Math.max(1, Math.round(height * scale));
    const image = await nomely.imageOf(svg, box);
    const painter = canvas.getContext('2d');
    painter.scale(canvas.width / width, canvas.height / height);
    painter.drawImage(image, 0, (height - box.height * shrink) / 2, box.width * shrink, box.height * shrink);
    nomely.post('mermaidPicture', { width, png: canvas.toDataURL('image/png') });
  },

  async imageOf(svg, box) {
    const copy = svg.cloneNode(true);
    copy.setAttribute('width', box.width);
    copy.setAttribute('height', box.height);
    copy.style.maxWidth = 'none';
    const image = new Image();
    image.src = 'data:image/svg+xml;charset=utf-8,' + encodeURIComponent(new XMLSerializer().serializeToString(copy));
    await image.decode();
    return image;
  },
};
