// SPDX-License-Identifier: BSD-3-Clause

// Opens pages in headless Chromium, narrow and wide, light and dark, and printed, and ends with
// status 1 if an accessibility rule of axe-core is broken, something is cut or labels overlap:
//   check_pages.mjs MODULES PICTURES PAGE.html...
// MODULES has node_modules with playwright-core and axe-core; PICTURES gets what was seen.

import { readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { basename, resolve } from 'node:path';

const [modules, pictures, ...files] = process.argv.slice(2);
const require = createRequire(resolve(modules, 'package.json'));
const { chromium } = require('playwright-core');
const axe = readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');

// Run in the page: what a reader would miss.
function faultsOfLayout() {
  const faults = [];
  const root = document.documentElement;
  if (root.scrollWidth > root.clientWidth) {
    faults.push(`the page is ${root.scrollWidth} px wide, the window ${root.clientWidth}`);
  }
  for (const group of document.querySelectorAll('.xlabels, .ylabels')) {
    const boxes = [...group.children].map((label) => [label.textContent, label.getBoundingClientRect()]);
    boxes.forEach(([text, box], i) => {
      if (box.left < 0 || box.right > root.clientWidth) faults.push(`label ${text} is cut`);
      for (const [other, next] of boxes.slice(i + 1)) {
        const apart = box.right <= next.left || next.right <= box.left ||
          box.bottom <= next.top + 1 || next.bottom <= box.top + 1;
        if (!apart) faults.push(`labels ${text} and ${other} overlap`);
      }
    });
  }
  for (const cell of document.querySelectorAll('.map li')) {
    if (cell.scrollWidth > cell.clientWidth + 1) faults.push(`cell ${cell.textContent} is cut`);
  }
  return faults;
}

async function check(browser, file, view) {
  const page = await browser.newPage({
    viewport: { width: view.width, height: 900 }, colorScheme: view.scheme, bypassCSP: true });
  const requests = [];
  page.on('request', (request) => requests.push(request.url()));
  await page.goto('file://' + resolve(file));
  const faults = await page.evaluate(faultsOfLayout);
  if (requests.length !== 1) faults.push(`it asks for ${requests.slice(1).join(', ')}`);
  const picture = resolve(pictures, `${basename(file, '.html')}-${view.name}`);
  await page.screenshot({ path: `${picture}.png`, fullPage: true });
  await page.evaluate(axe);
  const result = await page.evaluate(() => globalThis.axe.run());
  for (const violation of result.violations) {
    faults.push(`${violation.id}: ${violation.nodes.length} times, as in ${violation.nodes[0].html}`);
  }
  if (view.print) await page.pdf({ path: `${picture}.pdf`, format: 'A4', printBackground: true });
  await page.close();
  return { faults, passed: result.passes.length };
}

const views = [];
for (const [name, width] of [['phone', 390], ['desktop', 1280]]) {
  for (const scheme of ['light', 'dark']) {
    views.push({ name: `${name}-${scheme}`, width, scheme, print: name === 'desktop' });
  }
}
const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox'] });
let failed = false;
for (const file of files) {
  for (const view of views) {
    const { faults, passed } = await check(browser, file, view);
    for (const fault of faults) console.error(`${file}, ${view.name}: ${fault}`);
    console.log(`${file}, ${view.name}: ${passed} rules passed, ${faults.length} faults`);
    failed ||= faults.length !== 0;
  }
}
await browser.close();
process.exit(failed ? 1 : 0);
