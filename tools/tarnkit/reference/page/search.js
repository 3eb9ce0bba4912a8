(function () {
  var form = document.querySelector(".search");
  var field = document.getElementById("page.search");
  var found = document.getElementById("page.found");
  var sections = Array.prototype.slice.call(document.querySelectorAll(".category"));
  var entries = Array.prototype.map.call(document.querySelectorAll(".entries > li"),
    function (item) {
      return {item: item, words: (item.textContent + " " + item.dataset.words).toLowerCase()};
    });
  function search() {
    var words = field.value.toLowerCase().split(/\s+/).filter(Boolean);
    var count = 0;
    entries.forEach(function (entry) {
      var fits = words.every(function (word) { return entry.words.indexOf(word) >= 0; });
      entry.item.hidden = !fits;
      if (fits) count += 1;
    });
    sections.forEach(function (section) {
      section.hidden = !section.querySelector(".entries > li:not([hidden])");
      var link = document.querySelector('.categories a[href="#' + section.id + '"]');
      link.parentNode.hidden = section.hidden;
    });
    found.textContent = !words.length ? "" : count === 1 ? "1 patch" : (count || "No") + " patches";
  }
  form.hidden = false;
  field.addEventListener("input", search);
  form.addEventListener("submit", function (event) {
    event.preventDefault();
    var name = field.value.trim().toLowerCase();
    var links = Array.prototype.slice.call(
      document.querySelectorAll(".entries > li:not([hidden]) a"));
    var best = links.filter(function (link) { return link.textContent.toLowerCase() === name; });
    if (name && links.length) (best[0] || links[0]).click();
  });
  document.addEventListener("keydown", function (event) {
    if (event.key === "/" && event.target !== field && !event.ctrlKey && !event.metaKey) {
      event.preventDefault();
      field.focus();
    } else if (event.key === "Escape" && event.target === field) {
      field.value = "";
      search();
    }
  });
  search();
})();
