// SPDX-License-Identifier: BSD-3-Clause

// What is wider than a phone scrolls by itself; with this by the keyboard as well.
addEventListener('load', () => {
  for (const element of document.querySelectorAll('.md-typeset__scrollwrap, .md-typeset pre > code')) {
    element.tabIndex = 0;
  }
});
