// SPDX-License-Identifier: BSD-3-Clause

// Reads the documentation site from the disk in headless Chromium, narrow and wide, light and dark, and ends with
// status 1 if something is cut, anything comes from elsewhere, the search finds nothing or an accessibility rule of
// axe-core is broken:
//   check_site.mjs MODULES PICTURES SITE
// MODULES has node_modules with playwright-core and axe-core; PICTURES gets what was seen.

import { mkdirSync, readdirSync, readFileSync } from 'node:fs';
import { createRequire } from 'node:module';
import { basename, resolve } from 'node:path';
import { pathToFileURL } from 'node:url';

const [modules, pictures, site] = process.argv.slice(2).map((name) => resolve(name));
const require = createRequire(resolve(modules, 'package.json'));
const { chromium } = require('playwright-core');
const axe = readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');
const urlOf = (file) => pathToFileURL(resolve(site, file)).href;

// What is searched for, and the page that the first of the results must be of.
const SEARCHES = [['salvage damaged recording', 'user-guide.html'], ['EventRec', 'output-files.html'],
  ['open_session', 'python-reference.html']];

// Run in the page: what a reader would miss.
function faultsOfLayout(scheme) {
  const faults = [];
  const root = document.documentElement;
  if (root.scrollWidth > root.clientWidth) {
    faults.push(`the page is ${root.scrollWidth} px wide, the window ${root.clientWidth}`);
  }
  if (document.body.dataset.mdColorScheme !== scheme) faults.push(`not in the colours ${scheme}`);
  for (const element of document.querySelectorAll('article *')) {
    const isCut = ['hidden', 'clip'].includes(getComputedStyle(element).overflowX) &&
      element.clientWidth > 0 && element.scrollWidth > element.clientWidth + 1;
    if (isCut) faults.push(`<${element.localName}> ${element.textContent.trim().slice(0, 40)} is cut`);
  }
  for (const image of document.images) if (!image.naturalWidth) faults.push(`${image.src} is not shown`);
  return faults;
}

async function openPage(browser, view, requests) {
  const page = await browser.newPage({ viewport: { width: view.width, height: 900 }, colorScheme: view.scheme });
  page.on('request', (request) => requests.push(request.url()));
  page.on('pageerror', (error) => requests.push(`error ${error.message}`));
  return page;
}

async function check(browser, file, view) {
  const requests = [];
  const page = await openPage(browser, view, requests);
  await page.goto(urlOf(file));
  await page.waitForFunction(() => document.body.dataset.mdColorScheme);
  const faults = await page.evaluate(faultsOfLayout, view.scheme === 'dark' ? 'slate' : 'default');
  await page.screenshot({ path: resolve(pictures, `${basename(file, '.html')}-${view.name}.png`), fullPage: view.full });
  await page.evaluate(axe);
  const { violations } = await page.evaluate(() => globalThis.axe.run('article'));
  for (const violation of violations) {
    faults.push(`${violation.id}: ${violation.nodes.length} times, as in ${violation.nodes[0].html}`);
  }
  await page.close();
  const elsewhere = requests.filter((url) => !url.startsWith('file:') && !url.startsWith('blob:') && !url.startsWith('data:'));
  return [...faults, ...elsewhere.map((url) => `it asks for ${url}`)];
}

async function search(browser, [words, expected], view) {
  const requests = [];
  const page = await openPage(browser, view, requests);
  await page.goto(urlOf('index.html'));
  await page.locator(view.width < 960 ? 'label[for="__search"].md-header__button' : '.md-search__input').first().click();
  await page.keyboard.type(words);
  const result = page.locator('.md-search-result__link').first();
  await result.waitFor({ timeout: 30000 });
  await page.screenshot({ path: resolve(pictures, `search-${words.split(' ')[0]}-${view.name}.png`) });
  await result.click();
  await page.waitForURL((url) => !url.pathname.endsWith('index.html'), { timeout: 30000 });
  const found = basename(new URL(page.url()).pathname);
  const marked = await page.locator('article mark').count();
  await page.close();
  if (found !== expected) return [`"${words}" leads to ${found}, not to ${expected}`];
  return marked ? [] : [`"${words}" is not marked in ${found}`];
}

const views = [];
for (const [name, width] of [['phone', 390], ['desktop', 1280]]) {
  for (const scheme of ['light', 'dark']) views.push({ name: `${name}-${scheme}`, width, scheme, full: name === 'phone' });
}
mkdirSync(pictures, { recursive: true });
const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? '/usr/bin/chromium', args: ['--no-sandbox'] });
let count = 0;
let failures = 0;
async function report(name, looking) {
  const faults = await looking.catch((error) => [error.message.split('\n')[0]]);
  for (const fault of faults) console.error(`${name}: ${fault}`);
  count += 1;
  failures += faults.length;
}
for (const view of views) {
  for (const file of readdirSync(site).filter((name) => name.endsWith('.html'))) {
    await report(`${file}, ${view.name}`, check(browser, file, view));
  }
  for (const words of SEARCHES) await report(`search, ${view.name}`, search(browser, words, view));
}
await browser.close();
console.log(`${count} checks of pages and searches, ${failures} faults`);
process.exit(failures ? 1 : 0);
