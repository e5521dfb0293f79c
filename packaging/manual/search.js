// Looks in the index that stands in search-index.js, so it works from a folder as well as from a server.
"use strict";
(() => {
  const field = document.getElementById("search");
  const list = document.getElementById("found");
  const pages = document.getElementById("pages");

  // All words must be there; those in a title or heading count more.
  function rank(entry, words) {
    let sum = 0;
    for (const word of words) {
      const inTitle = entry.title.toLowerCase().includes(word);
      const inHeading = entry.heading.toLowerCase().includes(word);
      if (!inTitle && !inHeading && !entry.text.toLowerCase().includes(word)) return 0;
      sum += inTitle ? 8 : inHeading ? 6 : 1;
    }
    return sum;
  }

  function around(text, word) {
    const at = Math.max(0, text.toLowerCase().indexOf(word) - 30);
    return (at > 0 ? "… " : "") + text.slice(at, at + 90) + " …";
  }

  function show() {
    const words = field.value.toLowerCase().split(/\s+/).filter((word) => word !== "");
    list.hidden = words.length === 0;
    pages.hidden = words.length > 0;
    if (words.length === 0) return;
    const found = searchIndex.map((entry) => ({ entry, sum: rank(entry, words) })).filter((one) => one.sum > 0);
    found.sort((one, other) => other.sum - one.sum);
    list.replaceChildren(...found.slice(0, 20).map(({ entry }) => {
      const line = document.createElement("li");
      const link = line.appendChild(document.createElement("a"));
      link.href = entry.page;
      link.textContent = entry.heading === entry.title ? entry.title : entry.title + ": " + entry.heading;
      line.appendChild(document.createElement("small")).textContent = around(entry.text, words[0]);
      return line;
    }));
    if (found.length === 0) list.innerHTML = "<li><small>Nothing is found.</small></li>";
  }
  field.addEventListener("input", show);
})();
