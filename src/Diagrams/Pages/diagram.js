'use strict';

// Draws the source of a diagram. A source may configure the library, but none of what is listed in
// `secure`: those keep scripts, pages in pages and endless work out.
(async () => {
  // The library asks for it; engines of 2022 don't have it.
  URL.canParse ??= (url, base) => {
    try {
      return !!new URL(url, base);
    } catch {
      return false;
    }
  };
  try {
    const options = {
      startOnLoad: false,
      securityLevel: 'strict',
      htmlLabels: false,
      suppressErrorRendering: true,
      maxTextSize: 50000,
      maxEdges: 500,
      secure: ['secure', 'securityLevel', 'startOnLoad', 'maxTextSize', 'maxEdges', 'suppressErrorRendering',
               'htmlLabels', 'theme', 'themeVariables', 'fontFamily', 'dompurifyConfig'],
      theme: 'base',
      themeVariables: window.__nomelyTheme,
      fontFamily: '"Noto Sans CJK SC", sans-serif',
    };
    for (const kind of ['flowchart', 'class', 'state', 'er', 'requirement', 'mindmap', 'block', 'architecture'])
      options[kind] = { htmlLabels: false, useMaxWidth: true };
    mermaid.initialize(options);
    // Some diagrams are as wide as what they are drawn in.
    const diagram = document.getElementById('diagram');
    const { svg } = await mermaid.render('nomely', window.__nomelyMermaidCode, diagram);
    diagram.innerHTML = svg;
    nomely.post('mermaidSVG', svg);
    await nomely.paint();
  } catch (error) {
    nomely.fail(error);
  }
})();
