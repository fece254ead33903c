"use strict";
// Folding, filtering and the tree of a page; without it all is there but for the branches of trees.
(() => {
  const all = (selector, inside = document) => [...inside.querySelectorAll(selector)];
  for (const tools of all(".tools")) tools.hidden = false;

  for (const button of all("button[data-open]")) {
    button.addEventListener("click", () => {
      for (const fold of all(button.dataset.within + " details")) fold.open = button.dataset.open === "yes";
    });
  }

  for (const input of all("input[data-filter]")) {
    const rows = all(input.dataset.filter + " [data-row]").map((row) => [row, row.textContent.toLowerCase()]);
    const count = document.getElementById(input.dataset.count);
    const show = () => {
      const words = input.value.toLowerCase().split(/\s+/).filter(Boolean);
      let shown = 0;
      for (const [row, text] of rows) {
        row.hidden = !words.every((word) => text.includes(word));
        if (!row.hidden) ++shown;
      }
      count.textContent = `${shown} of ${rows.length}`;
    };
    input.addEventListener("input", show);
    show();
  }

  // A tree comes as its nodes in document order: [nodes below it, name, [[name, type, value], …]].
  const data = document.getElementById("nodes");
  if (!data) return;
  const nodes = JSON.parse(data.textContent);
  const place = document.getElementById("tree");
  const atOnce = 500;

  const put = (parent, name, text, ofClass) => {
    const element = document.createElement(name);
    if (text) element.textContent = text;
    if (ofClass) element.className = ofClass;
    parent.append(element);
    return element;
  };
  const describe = (parent, index) => {
    const [, name, properties] = nodes[index];
    put(parent, "span", name || "(no name)", "name");
    for (const [key, type, value] of properties) {
      parent.append(" " + key + "=");
      put(parent, "code", value).title = type;
    }
  };
  const fill = (list, from, end) => {
    let index = from;
    for (let count = 0; index < end && count < atOnce; ++count) {
      const item = put(list, "li");
      item.id = "n" + index;
      const below = nodes[index][0];
      if (below === 0) {
        describe(item, index);
      } else {
        const fold = put(item, "details");
        describe(put(fold, "summary"), index);
        const first = index + 1;
        fold.addEventListener("toggle", () => {
          if (fold.open && !fold.querySelector("ul")) fill(put(fold, "ul"), first, first + below);
        });
      }
      index += 1 + below;
    }
    if (index >= end) return;
    const more = put(put(list, "li"), "button", "more");
    more.addEventListener("click", () => {
      more.parentNode.remove();
      fill(list, index, end);
    });
  };
  // Opens all that is around a node, and goes there.
  const reveal = (wanted) => {
    let list = place.querySelector("ul"), from = 0, end = nodes.length;
    for (;;) {
      let index = from;
      while (index + nodes[index][0] < wanted) index += 1 + nodes[index][0];
      while (!list.querySelector(":scope > #n" + index)) list.querySelector(":scope > li > button").click();
      const item = list.querySelector(":scope > #n" + index);
      if (index === wanted) {
        const target = item.querySelector("summary") || item;
        target.tabIndex = target.tabIndex < 0 ? -1 : target.tabIndex;
        target.scrollIntoView({ block: "center" });
        target.focus();
        return;
      }
      const fold = item.querySelector(":scope > details");
      fold.open = true;
      from = index + 1;
      end = from + nodes[index][0];
      list = fold.querySelector(":scope > ul");
      if (!list) {
        list = put(fold, "ul");
        fill(list, from, end);
      }
    }
  };
  place.textContent = "";
  fill(put(place, "ul", "", "tree"), 0, nodes.length);
  const root = place.querySelector("details");
  if (root) root.open = true;

  const input = document.getElementById("search"), found = document.getElementById("found"), said = document.getElementById("said");
  const most = 200;
  input.addEventListener("change", () => {
    const word = input.value.toLowerCase();
    found.textContent = "";
    let count = 0;
    for (let index = 0; word && index < nodes.length; ++index) {
      const text = nodes[index][1] + " " + nodes[index][2].map((one) => one[0] + "=" + one[2]).join(" ");
      if (!text.toLowerCase().includes(word) || ++count > most) continue;
      const go = put(put(found, "li"), "button", text.slice(0, 200));
      go.addEventListener("click", () => reveal(index));
    }
    said.textContent = word ? `${count} found` + (count > most ? `, the first ${most} shown` : "") : "";
  });
})();
