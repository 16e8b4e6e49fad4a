'use strict';

// Shows a diagram that was drawn before.
(async () => {
  try {
    const parsed = new DOMParser().parseFromString(window.__nomelyMermaidContent, 'text/html');
    const svg = parsed.querySelector('svg');
    if (svg) document.getElementById('diagram').replaceChildren(document.adoptNode(svg));
    await nomely.paint();
  } catch (error) {
    nomely.fail(error);
  }
})();
