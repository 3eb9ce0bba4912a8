#include "tarnkit/render/PageParts.h"

namespace tarnkit::detail {

const std::string_view kPageBodyStart = R"html(<body>
<a class="skip needs-script" href="#panel">Go to the details</a>
<header class="bar">
<nav class="path needs-script" aria-label="Groups"><ol id="path"></ol></nav>
<div class="search needs-script" role="search">
<input id="search" type="search" placeholder="Find a node" autocomplete="off" spellcheck="false"
 role="combobox" aria-label="Find a node by its name" aria-expanded="false" aria-controls="results"
 aria-autocomplete="list">
<ul class="results" id="results" role="listbox" aria-label="Nodes found" hidden></ul>
</div>
<button class="icon needs-script" id="theme" type="button" aria-label="Switch between light and dark"
 title="Light or dark"><svg viewBox="0 0 20 20" aria-hidden="true"><path
 d="M16.5 12.2A7 7 0 0 1 7.8 3.5a7 7 0 1 0 8.7 8.7z"/></svg></button>
</header>
<main class="stage" id="stage" tabindex="0" aria-label="The graph. Arrow keys move it, plus and minus zoom, 0 fits it; Tab goes from node to node.">
)html";

const std::string_view kPageBodyEnd =
    R"html(<div class="tools needs-script" role="group" aria-label="Zoom">
<button class="icon" id="out" type="button" aria-label="Zoom out" title="Zoom out (−)"><svg viewBox="0 0 20 20" aria-hidden="true"><path d="M5 10h10"/></svg></button>
<button class="level" id="level" type="button" title="Show at 100 % (1)" aria-label="Show at 100 %">100 %</button>
<button class="icon" id="in" type="button" aria-label="Zoom in" title="Zoom in (+)"><svg viewBox="0 0 20 20" aria-hidden="true"><path d="M5 10h10M10 5v10"/></svg></button>
<button class="icon" id="fit" type="button" aria-label="Fit the whole group" title="Fit (0)"><svg viewBox="0 0 20 20" aria-hidden="true"><path d="M4 7.5V4h3.5M12.5 4H16v3.5M16 12.5V16h-3.5M7.5 16H4v-3.5"/></svg></button>
</div>
</main>
<aside class="panel needs-script" id="panel" tabindex="-1" aria-label="Details"></aside>
<p class="unseen" id="said" role="status"></p>
)html";

}  // namespace tarnkit::detail
