// What scripts add to the pages: keys, filters, sorting, the theme. Without them everything is there all the same.
(() => {
  const root = document.documentElement;
  const find = (selector, within = document) => [...within.querySelectorAll(selector)];
  const make = (tag, properties) => Object.assign(document.createElement(tag), properties);
  let store;
  try { store = localStorage; } catch { store = {}; } // a sandboxed page has none
  if (store.vexcovTheme) root.dataset.theme = store.vexcovTheme;

  const dark = () => (root.dataset.theme || (matchMedia("(prefers-color-scheme: dark)").matches ? "dark" : "light")) === "dark";
  const theme = make("button", { type: "button", textContent: "Light / dark", title: "Key: t" });
  theme.onclick = () => { root.dataset.theme = store.vexcovTheme = dark() ? "light" : "dark"; };
  document.querySelector("header nav").append(theme);

  // Uncovered places, from where the reader is.
  const places = find(".code [id^=u]");
  const go = (step) => {
    const at = places.indexOf(document.activeElement);
    const behind = places.findIndex((place) => place.getBoundingClientRect().top > 5);
    const from = at >= 0 ? at + step : step > 0 ? Math.max(behind, 0) : (behind < 0 ? places.length : behind) - 1;
    const place = places[(from + places.length) % places.length];
    if (!place) return;
    place.focus({ preventScroll: true });
    place.scrollIntoView({ block: "center" });
  };

  // Rows of lists: a filter, and sorting by a column.
  const value = (row, column) => {
    const text = row.cells[column].textContent;
    const number = text === "–" ? -1 : Number(text.replace(/,/g, ""));
    return Number.isNaN(number) || !column ? text : number;
  };
  const filters = find(".list").map((table) => {
    const body = table.tBodies[0];
    find("th", table).forEach((head, column) => {
      if (head.firstElementChild) return;
      const button = make("button", { type: "button", textContent: head.textContent });
      button.onclick = () => {
        const up = head.ariaSort !== "ascending" && (!column || head.ariaSort === "descending");
        find("th", table).forEach((other) => other.removeAttribute("aria-sort"));
        head.setAttribute("aria-sort", up ? "ascending" : "descending");
        const keyed = [...body.rows].map((row) => [value(row, column), row]);
        keyed.sort(([a], [b]) => (a < b ? -1 : a > b ? 1 : 0) * (up ? 1 : -1));
        body.append(...keyed.map(([, row]) => row));
      };
      head.replaceChildren(button);
    });
    if (body.rows.length < 8) return null;
    const filter = make("input", { type: "search", placeholder: "Filter these rows", title: "Key: /" });
    filter.setAttribute("aria-label", "Filter these rows");
    filter.oninput = () => {
      const wanted = filter.value.toLowerCase();
      for (const row of body.rows) row.hidden = !row.textContent.toLowerCase().includes(wanted);
    };
    table.parentNode.before(filter);
    return filter;
  }).filter(Boolean);

  document.onkeydown = (event) => {
    if (event.target.matches("input") || event.ctrlKey || event.altKey || event.metaKey) return;
    if (event.key === "n") go(1);
    else if (event.key === "p") go(-1);
    else if (event.key === "t") theme.click();
    else if (event.key === "/" && filters[0]) { filters[0].focus(); event.preventDefault(); }
  };
})();
