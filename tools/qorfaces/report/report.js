// The report of a run: what index.html shows. The data are scripts, too, since a page that is opened from
// disk may read no other files; each calls a function of `qorfaces`.
//
//   data/run.js             qorfaces.run({photographs, perPiece, pieces, perChunk, landmarks, ...})
//   data/index-N.js         qorfaces.index(N, {names, faces, widths, heights, bytes, flags}): what is
//                           searched, filtered and sorted, perPiece photographs in order of their names
//   data/photographs-N.js   qorfaces.photographs(N, [...]): what is shown of perChunk photographs
//   data/landmarks-N.js     qorfaces.landmarks(N, [...]): their landmarks, fetched when they are asked for
"use strict";

(() => {
  const PER_PAGE = 60;
  const FAILED = 1;
  const LOOK_AT = 2;
  const SVG = "http://www.w3.org/2000/svg";
  const KEPT_CHUNKS = 400;

  const FILTERS = [
    { id: "all", text: "any", takes: () => true },
    { id: "0", text: "0 faces", takes: (i) => !failed(i) && all.faces[i] === 0 },
    { id: "1", text: "1", takes: (i) => all.faces[i] === 1 },
    { id: "2", text: "2", takes: (i) => all.faces[i] === 2 },
    { id: "3-5", text: "3 to 5", takes: (i) => all.faces[i] >= 3 && all.faces[i] <= 5 },
    { id: "more", text: "more", takes: (i) => all.faces[i] > 5 },
    { id: "failed", text: "failed", takes: failed },
    { id: "look", text: "look at these", takes: (i) => (all.flags[i] & LOOK_AT) !== 0 },
  ];

  const REASONS = {
    topAssumed: "the top of the head is assumed",
    topDoubtful: "the top of the head is doubtful",
    leavesPhotograph: "the portrait leaves the photograph",
    profileDropped: "the colour profile is left out",
    noHead: "no head to cut out",
    damaged: "the file is damaged or cut short; what could be read was used",
  };

  const byId = (id) => document.getElementById(id);
  const count = (number) => number.toLocaleString("en");
  const inWords = (number, one, more) => `${count(number)} ${number === 1 ? one : more}`;

  let run = null;
  const all = { names: [], faces: [], widths: [], heights: [], bytes: [], flags: [] };
  let searchable = null; // the names as they are compared with what is searched
  let shown = []; // numbers of the photographs that are chosen, in their order
  let page = 0;
  let large = -1; // the place in `shown` of the photograph that is shown large

  const choice = { filter: "all", search: "", sort: "name", descending: false };

  function failed(i) {
    return (all.flags[i] & FAILED) !== 0;
  }

  // --- Data ---------------------------------------------------------------------------------------------

  // What has come of each kind of chunk, and who waits for what has not.
  function chunkStore(kind) {
    const there = new Map();
    const waiting = new Map();
    return {
      get(number) {
        if (there.has(number)) {
          return Promise.resolve(there.get(number));
        }
        if (!waiting.has(number)) {
          const fetched = {};
          fetched.promise = new Promise((resolve, reject) => {
            fetched.resolve = resolve;
            loadScript(`data/${kind}-${number}.js`).catch((error) => {
              waiting.delete(number);
              reject(error);
            });
          });
          waiting.set(number, fetched);
        }
        return waiting.get(number).promise;
      },
      put(number, content) {
        there.set(number, content);
        if (there.size > KEPT_CHUNKS) {
          there.delete(there.keys().next().value);
        }
        const fetched = waiting.get(number);
        waiting.delete(number);
        if (fetched) {
          fetched.resolve(content);
        }
      },
    };
  }

  function loadScript(source) {
    return new Promise((resolve, reject) => {
      const script = document.createElement("script");
      script.src = source;
      script.onload = () => {
        script.remove();
        resolve();
      };
      script.onerror = () => {
        script.remove();
        reject(new Error(`${source} cannot be read`));
      };
      document.head.append(script);
    });
  }

  const pieces = chunkStore("index");
  const photographs = chunkStore("photographs");
  const landmarks = chunkStore("landmarks");

  const ofChunk = (store, i) =>
    store.get(Math.floor(i / run.perChunk)).then((chunk) => chunk[i % run.perChunk]);

  window.qorfaces = {
    run: (content) => {
      run = content;
    },
    index: pieces.put,
    photographs: photographs.put,
    landmarks: landmarks.put,
  };

  async function loadAll() {
    await loadScript("data/run.js");
    for (let number = 0; number < run.pieces; ++number) {
      const piece = await pieces.get(number);
      for (const column of Object.keys(all)) {
        for (const value of piece[column]) {
          all[column].push(value);
        }
      }
    }
  }

  // --- Choosing -----------------------------------------------------------------------------------------

  const asCompared = (text) => text.normalize("NFC").toLowerCase();

  const SORTS = {
    name: null, // the order in which they lie
    faces: (i) => all.faces[i],
    pixels: (i) => all.widths[i] * all.heights[i],
    bytes: (i) => all.bytes[i],
  };

  function sortShown() {
    const key = SORTS[choice.sort];
    const sign = choice.descending ? -1 : 1;
    if (key) {
      shown.sort((a, b) => sign * (key(a) - key(b)) || a - b);
    } else if (choice.descending) {
      shown.reverse();
    }
  }

  function choose() {
    const takes = FILTERS.find((filter) => filter.id === choice.filter).takes;
    const wanted = asCompared(choice.search);
    if (wanted && !searchable) {
      searchable = all.names.map(asCompared);
    }
    shown = [];
    for (let i = 0; i < all.names.length; ++i) {
      if (takes(i) && (!wanted || searchable[i].includes(wanted))) {
        shown.push(i);
      }
    }
    sortShown();
  }

  const pageCount = () => Math.max(1, Math.ceil(shown.length / PER_PAGE));

  // --- The address keeps what is chosen -----------------------------------------------------------------

  function writeAddress() {
    const words = new URLSearchParams();
    if (choice.filter !== "all") words.set("with", choice.filter);
    if (choice.search) words.set("name", choice.search);
    if (choice.sort !== "name") words.set("by", choice.sort);
    if (choice.descending) words.set("down", "1");
    if (page > 0) words.set("page", String(page + 1));
    history.replaceState(null, "", `#${words}`);
  }

  function readAddress() {
    const words = new URLSearchParams(location.hash.slice(1));
    const filter = words.get("with");
    const sort = words.get("by");
    choice.filter = FILTERS.some((each) => each.id === filter) ? filter : "all";
    choice.sort = Object.hasOwn(SORTS, sort ?? "") ? sort : "name";
    choice.search = words.get("name") ?? "";
    choice.descending = words.get("down") === "1";
    page = Math.max(0, (Number.parseInt(words.get("page") ?? "1", 10) || 1) - 1);
    byId("search").value = choice.search;
    byId("sort").value = choice.sort;
    byId("descending").checked = choice.descending;
  }

  // --- Elements -----------------------------------------------------------------------------------------

  function element(name, properties, ...children) {
    const made = document.createElement(name);
    Object.assign(made, properties);
    made.append(...children);
    return made;
  }

  function svgElement(name, attributes) {
    const made = document.createElementNS(SVG, name);
    for (const [key, value] of Object.entries(attributes)) {
      made.setAttribute(key, value);
    }
    return made;
  }

  // Boxes and points are in fractions; the drawing is as many units wide and high as the photograph has
  // pixels, so that it lies on the picture wherever the picture lies in its frame.
  function drawing(i) {
    return svgElement("svg", {
      viewBox: `0 0 ${all.widths[i]} ${all.heights[i]}`,
      "aria-hidden": "true",
    });
  }

  function addBoxes(svg, i, faces, numbered) {
    const width = all.widths[i];
    const height = all.heights[i];
    const size = Math.max(width, height) / 45;
    faces.forEach((face, number) => {
      const [left, top, right, bottom] = face.box;
      const group = svgElement("g", { class: "boxes", "data-face": number });
      for (const name of ["box-edge", "box"]) {
        group.append(
          svgElement("rect", {
            class: name,
            x: left * width,
            y: top * height,
            width: Math.max(0, right - left) * width,
            height: Math.max(0, bottom - top) * height,
          }),
        );
      }
      if (numbered) {
        const text = svgElement("text", {
          x: left * width,
          y: Math.max(top * height - size / 3, size),
          "stroke-width": size / 6,
        });
        text.style.fontSize = `${size}px`;
        text.textContent = String(number + 1);
        group.append(text);
      }
      svg.append(group);
    });
  }

  function addLandmarks(svg, i, faces) {
    let dots = "";
    for (const points of faces) {
      for (let at = 0; at + 1 < points.length; at += 2) {
        dots += `M${points[at] * all.widths[i]} ${points[at + 1] * all.heights[i]}h0`;
      }
    }
    for (const name of ["points-edge", "points"]) {
      svg.append(svgElement("path", { class: `landmarks ${name}`, d: dots }));
    }
  }

  function wantLandmarks(svg, i) {
    if (!run.landmarks || !byId("landmarks").checked || failed(i) || svg.dataset.landmarks) {
      return;
    }
    svg.dataset.landmarks = "asked";
    ofChunk(landmarks, i).then((faces) => addLandmarks(svg, i, faces), () => {});
  }

  const facesInWords = (i) =>
    failed(i) ? "failed" : all.faces[i] === 0 ? "no face" : inWords(all.faces[i], "face", "faces");

  // --- The grid -----------------------------------------------------------------------------------------

  function fillPicture(picture, i, details) {
    if (failed(i)) {
      picture.append(element("span", { className: "failed", textContent: "failed" }));
      return;
    }
    if (details.thumbnail) {
      picture.append(element("img", { src: details.thumbnail, alt: "", loading: "lazy" }));
    }
    const svg = drawing(i);
    addBoxes(svg, i, details.faces, false);
    picture.append(svg);
    wantLandmarks(svg, i);
  }

  function tile(place) {
    const i = shown[place];
    const name = all.names[i];
    const picture = element("span", { className: "picture" });
    picture.dataset.photograph = String(i);
    const facts = element("span", { className: "facts", textContent: facesInWords(i) });
    if ((all.flags[i] & LOOK_AT) !== 0) {
      facts.append(", ", element("span", { className: "warning", textContent: "look at this" }));
    }
    const button = element(
      "button",
      { type: "button", title: name },
      picture,
      element("span", { className: "name", textContent: name.slice(name.lastIndexOf("/") + 1) }),
      facts,
    );
    button.addEventListener("click", () => openLarge(place));
    ofChunk(photographs, i).then(
      (details) => fillPicture(picture, i, details),
      () => picture.append(element("span", { className: "failed", textContent: "no data" })),
    );
    return element("li", {}, button);
  }

  function showPage() {
    page = Math.min(page, pageCount() - 1);
    const first = page * PER_PAGE;
    const last = Math.min(first + PER_PAGE, shown.length);
    const tiles = [];
    for (let place = first; place < last; ++place) {
      tiles.push(tile(place));
    }
    byId("grid").replaceChildren(...tiles);
    byId("status").textContent =
      shown.length === 0
        ? "No photograph is like that."
        : `${inWords(shown.length, "photograph", "photographs")}, ${count(first + 1)} to ${count(last)} below.`;
    byId("page").value = String(page + 1);
    byId("page").max = String(pageCount());
    byId("page-count").textContent = count(pageCount());
    for (const id of ["first-page", "previous-page"]) byId(id).disabled = page === 0;
    for (const id of ["next-page", "last-page"]) byId(id).disabled = page === pageCount() - 1;
    byId("pages").hidden = pageCount() === 1;
    writeAddress();
  }

  function goToPage(wanted) {
    page = Math.min(Math.max(0, wanted), pageCount() - 1);
    showPage();
    byId("photographs").scrollIntoView();
  }

  function chooseAgain() {
    page = 0;
    choose();
    showPage();
  }

  function showFilters() {
    const counts = FILTERS.map(() => 0);
    for (let i = 0; i < all.names.length; ++i) {
      FILTERS.forEach((filter, number) => {
        counts[number] += filter.takes(i) ? 1 : 0;
      });
    }
    byId("filters").replaceChildren(
      ...FILTERS.map((filter, number) => {
        const button = element(
          "button",
          { type: "button", value: filter.id },
          filter.text,
          " ",
          element("span", { className: "count", textContent: `(${count(counts[number])})` }),
        );
        button.addEventListener("click", () => {
          choice.filter = filter.id;
          pressFilter();
          chooseAgain();
        });
        return button;
      }),
    );
    pressFilter();
  }

  function pressFilter() {
    for (const button of byId("filters").children) {
      button.setAttribute("aria-pressed", String(button.value === choice.filter));
    }
  }

  // The arrows go through the grid as it looks.
  function moveInGrid(key, focused) {
    const buttons = [...byId("grid").querySelectorAll("button")];
    const at = buttons.indexOf(focused);
    const top = buttons[0].offsetTop;
    const columns = Math.max(1, buttons.findIndex((button) => button.offsetTop > top));
    const perRow = columns === 1 && buttons[1]?.offsetTop === top ? buttons.length : columns;
    const steps = { ArrowLeft: -1, ArrowRight: 1, ArrowUp: -perRow, ArrowDown: perRow };
    const goal = buttons[at + steps[key]];
    if (goal) {
      goal.focus();
    }
  }

  // --- One photograph large -----------------------------------------------------------------------------

  function pixels(i, [x, y]) {
    return `${Math.round(x * all.widths[i])}, ${Math.round(y * all.heights[i])}`;
  }

  function faceNumbers(i, face) {
    const [left, top, right, bottom] = face.box;
    const rows = [
      ["left, top", pixels(i, [left, top])],
      ["width, height", pixels(i, [right - left, bottom - top])],
      ["nose bridge", pixels(i, face.noseBridge)],
      ["chin", pixels(i, face.chin)],
    ];
    if (face.headCentre) {
      rows.push(["head centre", pixels(i, face.headCentre)]);
    }
    const list = element("dl", {});
    for (const [name, value] of rows) {
      list.append(element("dt", { textContent: name }), element("dd", { textContent: value }));
    }
    return list;
  }

  function reasonsOf(reasons) {
    return (reasons ?? []).map((reason) =>
      element("p", { className: "warning", textContent: `Look: ${REASONS[reason] ?? reason}.` }),
    );
  }

  function faceEntry(i, face, number) {
    const entry = element(
      "li",
      {},
      element("h3", { textContent: `Face ${number + 1}` }),
      faceNumbers(i, face),
      ...reasonsOf(face.lookAt),
    );
    if (face.portrait) {
      const picture = element("img", {
        className: "portrait",
        src: face.portrait,
        alt: `Portrait of face ${number + 1}`,
      });
      entry.append(element("a", { href: face.portrait, target: "_blank" }, picture));
    }
    const choosing = (chosen) => () => {
      entry.classList.toggle("chosen", chosen);
      const group = byId("large-picture").querySelector(`[data-face="${number}"]`);
      group?.classList.toggle("chosen", chosen);
    };
    entry.addEventListener("pointerenter", choosing(true));
    entry.addEventListener("pointerleave", choosing(false));
    return entry;
  }

  function sizeInWords(i) {
    const size = `${count(Math.ceil(all.bytes[i] / 1000))} kB`;
    return failed(i) ? size : `${all.widths[i]} × ${all.heights[i]} pixels, ${size}`;
  }

  function showNumbers(i, details) {
    const entries = (details.faces ?? []).map((face, number) => faceEntry(i, face, number));
    const parts = [
      element("p", { textContent: `${facesInWords(i)}, ${sizeInWords(i)}. Positions in pixels.` }),
      ...reasonsOf(details.lookAt),
      element("ol", {}, ...entries),
    ];
    if (failed(i)) {
      parts.splice(0, parts.length, element("p", { textContent: sizeInWords(i) }),
        element("p", { className: "warning", textContent: `Failed: ${details.error}` }));
    } else if (all.faces[i] > entries.length) {
      parts.push(element("p", { textContent: `Numbers of the first ${entries.length} faces.` }));
    }
    byId("numbers").replaceChildren(...parts);
    byId("numbers").scrollTop = 0;
  }

  // The photograph itself where it can still be read and the browser knows its format, else the thumbnail.
  function showLargePicture(i, details) {
    const picture = element("span", { className: "picture" });
    if (!failed(i)) {
      const image = element("img", { alt: `${all.names[i]}, ${facesInWords(i)}` });
      image.addEventListener("error", () => {
        if (details.thumbnail && image.getAttribute("src") !== details.thumbnail) {
          image.src = details.thumbnail;
        }
      });
      image.src = details.original ?? details.thumbnail ?? "";
      const svg = drawing(i);
      addBoxes(svg, i, details.faces, true);
      picture.append(image, svg);
      picture.dataset.photograph = String(i);
      wantLandmarks(svg, i);
    } else {
      picture.append(element("span", { className: "failed", textContent: "failed" }));
    }
    byId("large-picture").replaceChildren(picture);
  }

  function showLarge(place) {
    large = place;
    const i = shown[place];
    byId("large-name").textContent = all.names[i];
    byId("large-place").textContent = `${count(place + 1)} of ${count(shown.length)}`;
    byId("previous").disabled = place === 0;
    byId("next").disabled = place === shown.length - 1;
    keepFocus();
    ofChunk(photographs, i).then(
      (details) => {
        if (large === place) {
          showLargePicture(i, details);
          showNumbers(i, details);
        }
      },
      (error) => {
        byId("large-picture").replaceChildren();
        byId("numbers").replaceChildren(element("p", { textContent: String(error.message) }));
      },
    );
  }

  function openLarge(place) {
    byId("large").showModal();
    byId("next").focus();
    showLarge(place);
  }

  // A button that is disabled keeps no keys.
  function keepFocus() {
    const focused = document.activeElement;
    if (focused === null || focused === document.body || focused.disabled || focused === byId("large")) {
      byId("close").focus();
    }
  }

  function goLarge(step) {
    const goal = large + step;
    if (goal >= 0 && goal < shown.length) {
      showLarge(goal);
    }
  }

  // The grid follows, so that the focus goes back to the photograph that was seen last.
  function closedLarge() {
    const seenOn = Math.floor(large / PER_PAGE);
    if (seenOn !== page) {
      page = seenOn;
      showPage();
    }
    byId("grid").children[large % PER_PAGE]?.querySelector("button").focus();
    large = -1;
  }

  // --- Keys and controls --------------------------------------------------------------------------------

  function toggle(id) {
    if (!byId(id).closest("label").hidden) {
      byId(id).click();
    }
  }

  function onKey(event) {
    if (event.ctrlKey || event.altKey || event.metaKey) {
      return;
    }
    const typing = event.target.closest("input:not([type=checkbox]), select") !== null;
    const inGrid = event.target.closest("#grid button");
    const arrow = event.key.startsWith("Arrow");
    if (typing) {
      return;
    }
    if (byId("large").open) {
      if (event.key === "ArrowLeft") goLarge(-1);
      else if (event.key === "ArrowRight") goLarge(1);
      else if (event.key === "Home") goLarge(-large);
      else if (event.key === "End") goLarge(shown.length - 1 - large);
      else if (event.key === "b") toggle("boxes");
      else if (event.key === "l") toggle("landmarks");
      else return;
    } else if (arrow && inGrid) moveInGrid(event.key, inGrid);
    else if (event.key === "/") byId("search").focus();
    else if (event.key === "b") toggle("boxes");
    else if (event.key === "l") toggle("landmarks");
    else return;
    event.preventDefault();
  }

  function showMarks() {
    document.body.classList.toggle("no-boxes", !byId("boxes").checked);
    document.body.classList.toggle("no-landmarks", !byId("landmarks").checked);
    for (const picture of document.querySelectorAll("[data-photograph]")) {
      const svg = picture.querySelector("svg");
      if (svg) {
        wantLandmarks(svg, Number(picture.dataset.photograph));
      }
    }
  }

  function listen() {
    byId("controls").addEventListener("submit", (event) => event.preventDefault());
    let soon = 0;
    byId("search").addEventListener("input", () => {
      clearTimeout(soon);
      soon = setTimeout(() => {
        choice.search = byId("search").value;
        chooseAgain();
      }, 150);
    });
    byId("sort").addEventListener("change", () => {
      choice.sort = byId("sort").value;
      chooseAgain();
    });
    byId("descending").addEventListener("change", () => {
      choice.descending = byId("descending").checked;
      chooseAgain();
    });
    byId("boxes").addEventListener("change", showMarks);
    byId("landmarks").addEventListener("change", showMarks);
    byId("first-page").addEventListener("click", () => goToPage(0));
    byId("previous-page").addEventListener("click", () => goToPage(page - 1));
    byId("next-page").addEventListener("click", () => goToPage(page + 1));
    byId("last-page").addEventListener("click", () => goToPage(pageCount() - 1));
    byId("page").addEventListener("change", () => goToPage((byId("page").valueAsNumber || 1) - 1));
    byId("previous").addEventListener("click", () => goLarge(-1));
    byId("next").addEventListener("click", () => goLarge(1));
    byId("close").addEventListener("click", () => byId("large").close());
    byId("large").addEventListener("close", closedLarge);
    document.addEventListener("keydown", onKey);
    document.querySelector(".skip").addEventListener("click", (event) => {
      event.preventDefault(); // the address is taken
      byId("photographs").focus();
    });
    addEventListener("hashchange", () => {
      readAddress();
      pressFilter();
      choose();
      showPage();
    });
  }

  async function start() {
    try {
      await loadAll();
    } catch (error) {
      byId("status").textContent = `The report is not whole: ${error.message}.`;
      return;
    }
    const faces = all.faces.reduce((sum, number) => sum + number, 0);
    byId("title").textContent =
      `${inWords(faces, "face", "faces")} in ${inWords(all.names.length, "photograph", "photographs")}`;
    document.title = byId("title").textContent;
    byId("about").textContent = run.about;
    byId("landmarks-label").hidden = !run.landmarks;
    readAddress();
    showFilters();
    showMarks();
    choose();
    showPage();
    listen();
    document.documentElement.dataset.ready = "true";
  }

  start();
})();
