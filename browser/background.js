// The Tessalwick extension: a context-menu entry on links, and a watch on new
// tabs. Both hand addresses to the native messaging host, tessalwick-send,
// which passes them on to the running program.
//
// sites.js (written from the program's site table at build time) sets
// globalThis.TESSALWICK: the host's name, the capture prefix and the sites'
// recognition rules. Firefox loads it before this script; Chromium's service
// worker imports it here.
if (typeof globalThis.TESSALWICK === 'undefined') {
  importScripts('sites.js');
}

const MENU_ID = 'tessalwick-download';

function removeAll(text, needle) {
  const escaped = needle.replace(/[.*+?^${}()|[\]\\/]/g, '\\$&');
  return text.replace(new RegExp(escaped, 'gi'), '');
}

// The site number of an address, 0 when none of the sites takes it: the
// program's rules for a single word. The path is what follows the first "/"
// once "http://www." and "http://" are taken out; a site is found by its host
// followed by "/", and then decided by its excluded and required fragments.
function recognisedSite(address) {
  const word = address.replace(/^ +| +$/g, '');
  if (word.length < 5 || !word.includes('/')) return 0;
  let copy = word;
  if (/http:\/\//i.test(word)) copy = removeAll(removeAll(word, 'http://www.'), 'http://');
  const slash = copy.indexOf('/');
  const path = slash < 0 ? '' : copy.slice(slash + 1).toLowerCase();
  if (path.length < 2) return 0;
  const lower = word.toLowerCase();
  for (const site of globalThis.TESSALWICK.sites) {
    if (!lower.includes(site.literal)) continue;
    if (site.excluded.some((fragment) => path.includes(fragment.toLowerCase()))) return 0;
    if (site.required && !path.includes(site.required.toLowerCase())) return 0;
    return site.number;
  }
  return 0;
}

// The last texts handed over and the host's answers, newest last.
const handedOver = [];

// Hands a text to the host; resolves to its answer, {taken, error}.
async function send(text) {
  let answer;
  try {
    answer = await chrome.runtime.sendNativeMessage(globalThis.TESSALWICK.hostName, { text });
  } catch (error) {
    console.warn('Tessalwick: the native messaging host did not answer:', error.message);
    answer = { taken: false, error: error.message };
  }
  handedOver.push({ text, answer });
  if (handedOver.length > 20) handedOver.shift();
  return answer;
}

// "Download with Tessalwick": the link as if pasted, whatever its site; the
// program keeps the links it knows.
function onMenuClicked(info) {
  if (info.menuItemId !== MENU_ID || !info.linkUrl) return Promise.resolve(null);
  return send(info.linkUrl);
}

// A new tab's first address, with the capture prefix, so that the program's
// "When open supported link in new browser tab" setting decides.
function onTabAddress(address) {
  if (!recognisedSite(address)) return Promise.resolve(null);
  return send(globalThis.TESSALWICK.prefix + address);
}

chrome.runtime.onInstalled.addListener(() => {
  chrome.contextMenus.create({
    id: MENU_ID,
    title: 'Download with Tessalwick',
    contexts: ['link'],
  });
});
chrome.contextMenus.onClicked.addListener(onMenuClicked);

// A tab is new until its first real address: one opened on a link may still
// be blank when it is created.
const newTabs = new Set();
function isBlank(address) {
  return !address || address === 'about:blank';
}
chrome.tabs.onCreated.addListener((tab) => {
  const address = tab.pendingUrl || tab.url;
  if (isBlank(address)) newTabs.add(tab.id);
  else onTabAddress(address);
});
chrome.tabs.onUpdated.addListener((tabId, change) => {
  if (!newTabs.has(tabId) || isBlank(change.url)) return;
  newTabs.delete(tabId);
  onTabAddress(change.url);
});
chrome.tabs.onRemoved.addListener((tabId) => newTabs.delete(tabId));

// For tests, which drive the handlers from the extension's own context.
globalThis.tessalwick = { recognisedSite, onMenuClicked, onTabAddress, handedOver };
