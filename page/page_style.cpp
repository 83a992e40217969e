// SPDX-License-Identifier: BSD-3-Clause
#include "page/page_style.h"

namespace stalwick {

const std::string_view kPageStyle = R"css(
:root{color-scheme:light dark;--ground:#fff;--text:#1c2024;--soft:#535a62;--line:#d5d9de;--panel:#f4f6f8;
--link:#0a58b5;--good:#17603a;--bad:#a3202b;--warn:#7a4a00;--gap:#c9ced4;--damage:#d04a4a;--ttl:#2a6fb0;
--s1:#2364aa;--s2:#b3460e;--s3:#17734a;--s4:#8a3fa0;--s5:#a01f54;--s6:#5d5f10;
--m1:#e9f1fa;--m2:#c9def2;--m3:#a3c8e8;--m4:#79abd9;--m5:#2f6fb3;--m6:#1d4e89;--m7:#0f2f5a;
--on-low:#14181c;--on-high:#fff;--named:#b3261e}
@media screen and (prefers-color-scheme:dark){:root{--ground:#15181c;--text:#e6e9ec;--soft:#a9b1ba;--line:#3a4149;
--panel:#1f242a;--link:#8cc0ff;--good:#7fd6a4;--bad:#ff9a94;--warn:#f0c27b;--gap:#59626c;--damage:#e06a63;
--ttl:#7db4ec;--s1:#7db4ec;--s2:#f2a06b;--s3:#74cf9f;--s4:#d3a1e6;--s5:#f38fb4;--s6:#d2d46a;
--m1:#1d2a38;--m2:#21405f;--m3:#245583;--m4:#2a69a6;--m5:#7db4ec;--m6:#a9cdf3;--m7:#d8e8fa;
--on-low:#fff;--on-high:#101418;--named:#ff9a94}}
*{box-sizing:border-box}
body{margin:0;background:var(--ground);color:var(--text);font:16px/1.5 system-ui,"Segoe UI",sans-serif}
header,main,footer{max-width:68rem;margin:0 auto;padding:0 1rem}
h1{font-size:1.6rem;line-height:1.2;margin:1.5rem 0 .5rem;overflow-wrap:anywhere}
h2{font-size:1.25rem;margin:2.2rem 0 .6rem;border-bottom:1px solid var(--line)}
h3{font-size:1rem;margin:0}
p{margin:.4rem 0}
a{color:var(--link)}
.skip{position:absolute;left:-99rem}
.skip:focus{position:static}
.hidden{position:absolute;width:1px;height:1px;overflow:hidden;clip-path:inset(50%);white-space:nowrap}
.soft,figcaption p,.axis{color:var(--soft)}
figcaption p{font-size:.9rem}
.findings{list-style:none;padding:0;margin:.8rem 0}
.findings li{border-left:.3rem solid var(--line);background:var(--panel);padding:.35rem .7rem;margin:.3rem 0;
overflow-wrap:anywhere}
.findings .good{border-color:var(--good)}.findings .bad{border-color:var(--bad)}
.findings .warn{border-color:var(--warn)}
dl.facts{display:grid;grid-template-columns:max-content 1fr;gap:.15rem 1rem;margin:.6rem 0}
dl.facts dt{color:var(--soft)}dl.facts dd{margin:0;overflow-wrap:anywhere}
figure.chart{margin:1.2rem 0 1.6rem;break-inside:avoid}
.frame{display:grid;grid-template-columns:4.6rem 1fr}
.ylabels{position:relative;grid-column:1;font-size:.75rem;color:var(--soft)}
.ylabels span{position:absolute;right:.4rem;transform:translateY(50%);line-height:1;white-space:nowrap}
.area{grid-column:2;border-left:1px solid var(--soft);border-bottom:1px solid var(--soft);min-width:0}
.area svg{display:block;width:100%;height:100%}
.xlabels{grid-column:2;position:relative;height:1.3rem;font-size:.75rem;color:var(--soft)}
.xlabels span{position:absolute;top:.15rem;white-space:nowrap}
.axis{grid-column:2;text-align:center;font-size:.8rem;margin:0}
.legend{list-style:none;display:flex;flex-wrap:wrap;gap:.1rem 1rem;padding:0;margin:.3rem 0;font-size:.85rem}
.legend svg{margin-right:.35rem;vertical-align:middle}
.grid{stroke:var(--line);stroke-width:1;vector-effect:non-scaling-stroke}
.series,.trace{fill:none;stroke-width:1.4;vector-effect:non-scaling-stroke;stroke-linejoin:round}
.trace{stroke:var(--s1);stroke-width:1}.trace.named{stroke:var(--named)}
.s1{stroke:var(--s1)}.s2{stroke:var(--s2);stroke-dasharray:7 2}.s3{stroke:var(--s3);stroke-dasharray:2 2}
.s4{stroke:var(--s4);stroke-dasharray:9 2 2 2}.s5{stroke:var(--s5);stroke-dasharray:4 4}
.s6{stroke:var(--s6);stroke-dasharray:12 3}
.whole{fill:var(--m4)}.gap{fill:var(--gap);stroke:var(--text);stroke-width:1;vector-effect:non-scaling-stroke}
.damage{fill:var(--damage);stroke:var(--damage);stroke-width:2;vector-effect:non-scaling-stroke}.ttl{fill:var(--ttl)}.bar{fill:var(--s1)}
.map{list-style:none;display:grid;grid-template-columns:repeat(16,1fr);gap:2px;padding:0;margin:.6rem 0}
.map li{font-size:.75rem;text-align:center;padding:.3rem 0;border:2px solid transparent;min-width:0}
.map .m1,.map .m2,.map .m3{color:var(--on-low)}.map .m4{color:var(--on-low)}
.map .m5,.map .m6,.map .m7{color:var(--on-high)}
.m1{background:var(--m1)}.m2{background:var(--m2)}.m3{background:var(--m3)}.m4{background:var(--m4)}
.m5{background:var(--m5)}.m6{background:var(--m6)}.m7{background:var(--m7)}
.map .named{border:2px solid var(--named);font-weight:bold}
.scale{list-style:none;display:flex;flex-wrap:wrap;gap:.2rem .9rem;padding:0;font-size:.85rem}
.scale i{display:inline-block;width:1.6rem;height:.9rem;margin-right:.3rem;vertical-align:middle}
.scroll{overflow-x:auto;max-width:100%}
.scroll:focus{outline:2px solid var(--link)}
table{border-collapse:collapse;font-size:.85rem;font-variant-numeric:tabular-nums}
th,td{padding:.2rem .6rem;text-align:right;border-bottom:1px solid var(--line);white-space:nowrap}
th:first-child,td:first-child,.words{text-align:left}
td.words{white-space:normal;min-width:8.5rem}
caption{text-align:left;color:var(--soft);padding:.3rem 0}
tr.named th{color:var(--named)}
.index{width:100%}.index th,.index td{vertical-align:top;padding:.5rem .6rem .5rem 0;white-space:normal;overflow-wrap:anywhere}
.index th:first-child{width:45%}.index svg{display:block;width:100%;max-width:16rem;height:5.5rem}.index p{font-weight:normal;margin:0 0 .3rem}
footer{margin-top:2rem;padding-bottom:2rem;color:var(--soft);font-size:.85rem}
@media (max-width:640px){.map{grid-template-columns:repeat(8,1fr)}.frame{grid-template-columns:3.6rem 1fr}
dl.facts{grid-template-columns:1fr;gap:0}dl.facts dd{margin-bottom:.4rem}}
@page{margin:14mm}
@media print{:root{color-scheme:only light}body{font-size:10.5pt}header,main,footer{max-width:none;padding:0}
.scroll{overflow:visible}table{font-size:8pt}th,td{padding:.1rem .3rem}
*{print-color-adjust:exact;-webkit-print-color-adjust:exact}tr,li,figure{break-inside:avoid}
h2,h3{break-after:avoid}a{color:inherit}.skip{display:none}}
)css";

}  // namespace stalwick
