#include "tarnkit/render/PageParts.h"

namespace tarnkit::detail {

const std::string_view kPageStyle = R"css(
*{box-sizing:border-box}
html,body{height:100%;margin:0}
body{display:grid;grid-template:52px minmax(0,1fr)/minmax(0,1fr) 344px;color:var(--tk-text);
background:var(--tk-canvas);font:13px/1.5 Inter,'SF Pro Text','Helvetica Neue','Segoe UI',Roboto,Arial,
'DejaVu Sans',sans-serif;overflow:hidden}
button,input{font:inherit;color:inherit}
:focus-visible{outline:2px solid var(--tk-accent);outline-offset:2px}
[hidden],html:not(.script) .needs-script{display:none!important}
html:not(.script) body{grid-template-columns:minmax(0,1fr)}
.unseen{position:absolute;width:1px;height:1px;margin:0;overflow:hidden;clip-path:inset(50%);
white-space:nowrap}
.skip{position:absolute;left:8px;top:-60px;z-index:9;padding:8px 14px;border-radius:8px;
background:var(--tk-body);color:var(--tk-text)}
.skip:focus{top:8px}

.bar{grid-column:1/-1;display:flex;align-items:center;gap:16px;padding:0 16px;
background:var(--tk-body);border-bottom:1px solid var(--tk-line);z-index:3}
.path{flex:1;min-width:0;overflow:hidden}
.path ol{display:flex;align-items:center;list-style:none;margin:0;padding:4px;min-width:0}
.path li{display:flex;align-items:center;min-width:0}
.path li+li::before{content:"";flex:none;width:6px;height:6px;margin:0 9px 0 5px;
border:solid var(--tk-muted);border-width:1.5px 1.5px 0 0;transform:rotate(45deg)}
.path button,.path span{max-width:22ch;padding:3px 6px;border:0;border-radius:6px;background:none;
color:var(--tk-muted);white-space:nowrap;overflow:hidden;text-overflow:ellipsis}
.path button{cursor:pointer}
.path button:hover{background:var(--tk-chip);color:var(--tk-text)}
.path [aria-current]{color:var(--tk-text);font-weight:600}

.search{position:relative;width:min(280px,40vw)}
.search input{width:100%;height:32px;padding:0 10px;border:1px solid var(--tk-line);border-radius:8px;
background:var(--tk-canvas)}
.search input::placeholder{color:var(--tk-muted);opacity:1}
.results{position:absolute;top:38px;right:0;width:min(360px,86vw);max-height:min(420px,70vh);margin:0;
padding:6px;overflow:auto;list-style:none;border:1px solid var(--tk-line);border-radius:10px;
background:var(--tk-body);box-shadow:0 12px 32px rgb(0 0 0/.18)}
.results li{padding:6px 10px;border-radius:6px;cursor:pointer}
.results li[aria-selected=true]{background:var(--tk-chip)}
.results b,.results small{display:block;overflow:hidden;text-overflow:ellipsis;white-space:nowrap;
font-weight:600}
.results small{color:var(--tk-muted);font-size:12px;font-weight:400}
.results .none{cursor:default;color:var(--tk-muted)}
.icon{display:grid;place-items:center;width:32px;height:32px;padding:0;border:1px solid transparent;
border-radius:8px;background:none;cursor:pointer}
.icon:hover{background:var(--tk-chip)}
.icon svg{width:18px;height:18px;fill:none;stroke:currentColor;stroke-width:1.6;stroke-linecap:round;
stroke-linejoin:round}

.stage{position:relative;min-width:0;min-height:0;overflow:hidden;outline-offset:-3px}
.stage>svg.tk-picture{display:block;width:100%;height:100%}
.script .stage>svg.tk-picture{cursor:grab;touch-action:none;user-select:none;-webkit-user-select:none}
.script .stage.is-dragging>svg{cursor:grabbing}
.stage .tk-canvas{fill:none}
.script .tk-node{cursor:pointer;outline:none}
.tk-node:hover .tk-body{stroke:var(--tk-muted)}
.tk-node.is-selected .tk-body{stroke:var(--tk-accent);stroke-width:2.5}
.tk-node:focus-visible .tk-body{stroke:var(--tk-accent);stroke-width:2.5;stroke-dasharray:none}
.tk-node:focus-visible.is-selected .tk-body{stroke-width:4}
.tk-wire{transition:opacity .15s}
.has-selection .tk-wire{opacity:.25}
.has-selection .tk-wire.is-near{opacity:1;stroke-width:2.75}
.is-distant .tk-port,.is-distant .tk-group,.is-distant .tk-collapsed,.is-far text,.is-far .tk-badge{display:none}
.tools{position:absolute;left:16px;bottom:16px;display:flex;align-items:center;padding:3px;
border:1px solid var(--tk-line);border-radius:11px;background:var(--tk-body);
box-shadow:0 4px 14px rgb(0 0 0/.08)}
.tools .level{width:60px;height:32px;padding:0;border:0;border-radius:8px;background:none;
font-variant-numeric:tabular-nums;cursor:pointer}
.tools .level:hover{background:var(--tk-chip)}

.panel{min-height:0;overflow:auto;padding:20px 20px 32px;border-left:1px solid var(--tk-line);
background:var(--tk-body);outline-offset:-3px}
.panel h1{display:flex;gap:10px;margin:0;font-size:17px;line-height:1.35;overflow-wrap:anywhere}
.panel h1 i{flex:none;width:6px;border-radius:3px}
.panel h2{margin:24px 0 6px;font-size:12px;font-weight:600;color:var(--tk-muted)}
.panel p{margin:4px 0 0;color:var(--tk-muted);overflow-wrap:anywhere}
.panel .warn{color:var(--tk-warn)}
.panel code{font:12px/1.5 ui-monospace,Menlo,Consolas,'DejaVu Sans Mono',monospace}
.panel .open{display:flex;justify-content:space-between;width:100%;margin:16px 0 0;padding:9px 14px;
border:0;border-radius:9px;background:var(--tk-accent);color:var(--tk-body);font-weight:600;
cursor:pointer}
.panel .open:hover{filter:brightness(1.08)}
.panel .open:disabled{background:var(--tk-chip);color:var(--tk-muted);cursor:default;filter:none}
.panel ul{margin:0;padding:0;list-style:none}
.panel .row{padding:7px 0;border-top:1px solid var(--tk-chip)}
.panel h2+ul .row:first-child{border-top:0}
.panel .main{display:flex;flex-wrap:wrap;align-items:baseline;gap:0 8px}
.panel .main>i{flex:none;align-self:flex-start;width:8px;height:8px;margin-top:6px;border-radius:50%}
.panel .name{flex:1;min-width:0;overflow-wrap:anywhere}
.panel .value{max-width:55%;color:var(--tk-muted);text-align:right;overflow-wrap:anywhere;
white-space:pre-wrap;font-variant-numeric:tabular-nums;max-height:9em;overflow:auto}
.panel .value.long{flex:1 0 100%;max-width:100%;padding-left:16px;text-align:start}
.panel .value.set{color:var(--tk-text)}
.panel .value i{display:inline-block;width:22px;height:12px;margin-right:6px;border-radius:3px;
border:1px solid var(--tk-line);vertical-align:-1px}
.panel small{color:var(--tk-muted);font-size:11.5px}
.panel .ends{padding-left:16px}
.panel .end{display:block;max-width:100%;padding:2px 6px;margin-left:-6px;border:0;border-radius:5px;
background:none;color:var(--tk-accent);font-size:12px;text-align:left;overflow-wrap:anywhere;
cursor:pointer}
.panel .end:hover{background:var(--tk-chip)}
.panel .part{padding:10px 0 2px;font-weight:600;font-size:11.5px;color:var(--tk-muted)}
.panel dl{display:grid;grid-template-columns:auto 1fr;gap:5px 14px;margin:10px 0 0}
.panel dt{color:var(--tk-muted)}
.panel dd{margin:0;overflow-wrap:anywhere}
kbd{display:inline-block;min-width:22px;padding:0 6px;border:1px solid var(--tk-line);
border-bottom-width:2px;border-radius:5px;background:var(--tk-canvas);text-align:center;
font:11px/18px ui-monospace,Menlo,Consolas,'DejaVu Sans Mono',monospace;color:var(--tk-muted)}

@media (max-width:820px){
body{grid-template:52px minmax(0,1fr) 42vh/minmax(0,1fr)}
.panel{border-left:0;border-top:1px solid var(--tk-line)}
}
@media (prefers-reduced-motion:reduce){*{transition:none!important}}
@media print{
body{display:block;overflow:visible}
.bar,.tools,.panel{display:none}
}
)css";

}  // namespace tarnkit::detail
