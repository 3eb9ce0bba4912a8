#include "tools/tarnkit/reference/Stylesheet.h"

#include <fmt/format.h>

#include "tools/tarnkit/reference/PageFrame.h"

namespace tarnkit::tool {

namespace {

constexpr const char* kLightColors =
    "color-scheme:light;--paper:#fff;--ink:#1c2026;--soft:#5a626d;--faint:#f5f6f8;--rule:#e2e5ea;"
    "--link:#0058a8;";
constexpr const char* kDarkColors =
    "color-scheme:dark;--paper:#1b1e23;--ink:#e7eaee;--soft:#a3abb6;--faint:#22262c;--rule:#343a43;"
    "--link:#7cc0ff;";

constexpr const char* kPageRules = R"css(*{box-sizing:border-box}
html{scroll-padding-top:1rem;-webkit-text-size-adjust:100%}
body{max-width:70rem;margin:0 auto;padding:2rem 1.5rem 3rem;background:var(--paper);color:var(--ink);
font:1rem/1.55 system-ui,-apple-system,"Segoe UI","Helvetica Neue",Arial,"Noto Sans",sans-serif;
font-variant-numeric:tabular-nums;overflow-wrap:break-word}
h1,h2,h3{line-height:1.2;text-wrap:balance}
h1{margin:0;font-size:2.25rem;font-weight:650;letter-spacing:-.02em}
h2{margin:2.5rem 0 .75rem;font-size:1.25rem;font-weight:650;letter-spacing:-.01em}
h3{margin:2rem 0 .75rem;font-size:1rem;font-weight:650}
p{margin:0}
ul{margin:0;padding:0;list-style:none}
dl,dd{margin:0}
a{color:var(--link);text-decoration:none}
a:hover{text-decoration:underline;text-underline-offset:.2em}
a:focus-visible,input:focus-visible,.wide:focus-visible{outline:2px solid var(--link);outline-offset:3px;
border-radius:3px}
code,pre{font:.875em/1.5 ui-monospace,"SF Mono",Menlo,Consolas,"DejaVu Sans Mono",monospace}
pre{margin:0;white-space:pre-wrap}
[hidden]{display:none!important}
.skip{position:absolute;left:-99rem}
.skip:focus{left:1rem;top:1rem;padding:.5rem 1rem;background:var(--paper)}
.flag,.note{display:inline-block;margin-left:.35em;font-size:.75rem;font-weight:400;letter-spacing:0;
color:var(--soft)}
.flag{padding:0 .5em;border:1px solid var(--rule);border-radius:1em;vertical-align:.1em;line-height:1.5}
h1 .flag,h2 .flag{vertical-align:.35em}
.none,.stands,.count{color:var(--soft)}
.stands,.stands code{font-size:.875em}
.colophon{margin-top:3rem;padding-top:1rem;border-top:1px solid var(--rule);font-size:.8125rem;
color:var(--soft)}
)css";

constexpr const char* kPatchRules = R"css(.top{margin-bottom:2rem;font-size:.875rem}
.top a+a::before{content:"/";margin:0 .5em 0 .25em;color:var(--soft)}
.variants{display:flex;flex-wrap:wrap;gap:.25rem 1rem;margin-top:1.5rem;padding:.5rem .875rem;
border-radius:6px;background:var(--faint);font-size:.875rem}
.variants span:first-child{color:var(--soft)}
.variants ul{display:flex;flex-wrap:wrap;gap:.25rem 1rem}
.patch+.patch{margin-top:4rem;padding-top:2.5rem;border-top:1px solid var(--rule)}
.patch+.patch>h2{margin-top:0;font-size:1.75rem}
.lead{max-width:38rem;margin-top:.875rem;font-size:1.125rem;line-height:1.5;text-wrap:pretty}
.overview{display:grid;grid-template-columns:minmax(0,1fr) 17rem;gap:2.5rem;align-items:start;
margin-top:1.75rem}
.picture{margin:0;padding:1rem;border-radius:8px;background:var(--tk-canvas);text-align:center}
.picture svg{display:block;max-width:100%;height:auto;margin:0 auto}
.facts{font-size:.875rem}
.facts,.related dl,.kinds dl{border-bottom:1px solid var(--rule)}
.facts dt{padding-top:.5rem;border-top:1px solid var(--rule);color:var(--soft);font-size:.8125rem}
.facts dd{padding-bottom:.5rem;overflow-wrap:anywhere}
.wide{overflow-x:auto}
table{width:100%;min-width:46rem;table-layout:fixed;border-collapse:collapse;font-size:.875rem;text-align:left}
caption{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%);white-space:nowrap}
th,td{padding:.4375rem 1.25rem .4375rem 0;border-top:1px solid var(--rule);vertical-align:baseline;
overflow-wrap:anywhere}
th:last-child,td:last-child{padding-right:0}
thead th{border-top:0;font-size:.8125rem;font-weight:400;color:var(--soft);white-space:nowrap}
tbody:last-child tr:last-child>*{border-bottom:1px solid var(--rule)}
tbody th{font-weight:600}
th:nth-child(1){width:20%}
th:nth-child(2){width:28%}
th:nth-child(3):not(:last-child){width:12%}
th:nth-child(4):not(:last-child){width:15%}
td:nth-child(3){overflow-wrap:normal}
td:nth-child(2) code{color:var(--soft)}
.group th{padding-top:1.125rem;font-size:.8125rem;font-weight:400;color:var(--soft)}
.choices{display:flex;flex-wrap:wrap;gap:.125rem .875rem}
.choices li{white-space:nowrap}
.swatch{white-space:nowrap}
.swatch::before{content:"";display:inline-block;width:.875em;height:.875em;margin-right:.4em;
border-radius:3px;background:var(--color);box-shadow:inset 0 0 0 1px rgba(127,127,127,.5);
vertical-align:-.06em}
.related{margin-top:3.5rem}
.related dl,.kinds dl{display:grid;grid-template-columns:minmax(8rem,max-content) minmax(0,1fr);font-size:.875rem}
.related dt,.related dd,.kinds dt,.kinds dd{padding:.4375rem 0;border-top:1px solid var(--rule)}
.related dt{padding-right:1.25rem;color:var(--soft)}
.related ul{display:flex;flex-wrap:wrap;gap:.125rem 1.25rem}
@media (max-width:52rem){.overview{grid-template-columns:minmax(0,1fr);gap:1.5rem}
.related dl{display:block}.related dd{padding-top:0;border-top:0}h1{font-size:1.875rem}}
)css";

constexpr const char* kIndexRules = R"css(.title{max-width:44rem;margin:1rem 0 2.5rem}
.title>p{margin-top:.75rem;font-size:1.125rem;color:var(--soft);text-wrap:pretty}
.search{display:flex;flex-wrap:wrap;align-items:baseline;gap:.5rem .75rem;margin-top:1.5rem}
.search label{font-size:.875rem;color:var(--soft)}
.search input{flex:0 1 22rem;min-width:0;padding:.4375rem .75rem;border:1px solid var(--rule);
border-radius:6px;background:var(--faint);color:inherit;font:inherit}
.search p{font-size:.875rem;color:var(--soft)}
.columns{display:grid;grid-template-columns:10rem minmax(0,1fr);gap:3.5rem;align-items:start}
.categories{position:sticky;top:1.5rem;max-height:calc(100vh - 3rem);overflow-y:auto;font-size:.875rem;line-height:1.9}
.categories li{display:flex;justify-content:space-between}
.columns main{display:grid;gap:3rem}
.columns h2{margin-top:0}
.category h2{padding-bottom:.5rem;border-bottom:1px solid var(--rule)}
.entries{display:grid;grid-template-columns:repeat(auto-fill,minmax(20rem,1fr));gap:1.125rem 2.5rem}
.entries li{position:relative;padding-left:1.25rem;break-inside:avoid}
.entries a{font-weight:600}
.entries p{font-size:.875rem;line-height:1.45;color:var(--soft);text-wrap:pretty}
.entries li::before{content:"";background:var(--patch);position:absolute;left:0;top:.5em;width:.625rem;height:.625rem;border-radius:50%;
box-shadow:inset 0 0 0 1px rgba(127,127,127,.45)}
.kinds dt{font-weight:600}
.kinds dd{color:var(--soft)}
@media (max-width:52rem){.columns{grid-template-columns:minmax(0,1fr);gap:2rem}
.categories{position:static;max-height:none}.categories ul{display:flex;flex-wrap:wrap;gap:0 1.25rem}
.categories li{gap:.4em}.entries{grid-template-columns:minmax(0,1fr)}}
)css";

// The colours of paper are set with the themes.
constexpr const char* kPaperRules = R"css(@page{margin:18mm 16mm}
@media print{body{max-width:none;padding:0;font-size:10pt}
h1{font-size:20pt}h2{font-size:13pt;margin-top:1.5rem}h3{font-size:11pt}
h1,h2,h3,thead,.group{break-after:avoid}
a{color:inherit}
.top,.variants,.related,.search,.categories,.skip{display:none}
.columns,.columns main{display:block}
.entries{display:block;columns:2;column-gap:2rem}
.entries li{margin-bottom:.625rem}
.columns h2{margin-top:1.5rem}
.overview{grid-template-columns:minmax(0,1fr) 13rem;gap:1.5rem;margin-top:1rem}
.picture,tr,dt,dd{break-inside:avoid}
.picture{padding:.5rem;border:1px solid var(--rule)}
.picture svg{max-height:15cm}
.wide{overflow:visible}table{min-width:0;font-size:9pt}
th:nth-child(3):not(:last-child){width:14%}
th,td{padding-right:.75rem}code{font-size:8pt}
.swatch::before,.entries li::before,.picture *{print-color-adjust:exact;-webkit-print-color-adjust:exact}
th,td{padding-top:.25rem;padding-bottom:.25rem}
.patch+.patch{margin-top:2rem;padding-top:1.5rem}
.colophon{margin-top:1.5rem}}
)css";

std::string colorsOf(HXPictureTheme theme) {
  const char* const page = theme == HXPictureTheme::dark ? kDarkColors : kLightColors;
  return fmt::format(":root{{{}{}}}\n", page, pictureColors(theme));
}

}  // namespace

std::string referenceStylesheet(std::optional<HXPictureTheme> theme) {
  std::string css = fmt::format("/* {} */\n", kReferenceMark);
  css += colorsOf(theme.value_or(HXPictureTheme::light));
  if (!theme) {
    css +=
        fmt::format("@media (prefers-color-scheme:dark){{{}}}\n", colorsOf(HXPictureTheme::dark));
  }
  css += fmt::format("@media print{{{}}}\n", colorsOf(HXPictureTheme::light));
  for (const char* const rules : {kPageRules, kPatchRules, kIndexRules, kPaperRules}) css += rules;
  return css + pictureStyle();
}

}  // namespace tarnkit::tool
