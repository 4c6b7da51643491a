// The Tessalwick extension in Debian's chromium, headless: the helper writes
// the native messaging manifest into a profile of the test's own, a link opened
// in a new tab reaches the running program through tessalwick-send (added with
// "Do Nothing" clear, dropped with it set), and the context-menu handler hands
// a link over whatever that setting says. Every address resolves to a server
// of the test's own on 127.0.0.1.
//
// TESSALWICK_BUILD names the build folder; CHROMIUM the browser (/usr/bin/chromium).
import { test } from 'node:test';
import assert from 'node:assert/strict';
import { spawn, spawnSync } from 'node:child_process';
import { createServer } from 'node:http';
import fs from 'node:fs';
import os from 'node:os';
import path from 'node:path';
import puppeteer from 'puppeteer-core';

const build = path.resolve(process.env.TESSALWICK_BUILD ?? 'build');
const chromium = process.env.CHROMIUM ?? '/usr/bin/chromium';
const extension = path.join(build, 'browser');
const extensionId = 'fjpbfnodinlmblddleoojhidgknhgggc';
const tabLink = 'http://rapidshare.com/files/123/tab.zip';
const menuLink = 'http://hotfile.com/dl/5/menu.rar';

const sleep = (ms) => new Promise((done) => setTimeout(done, ms));
async function until(what, check, ms = 20000) {
  for (const end = Date.now() + ms; Date.now() < end; await sleep(100)) {
    const value = await check();
    if (value) return value;
  }
  throw new Error(`timed out waiting for ${what}`);
}

// A home, config, data and runtime folder of the test's own, and the
// program's settings in them.
function sandbox(settings) {
  const root = fs.mkdtempSync(path.join(os.tmpdir(), 'tessalwick-browser-'));
  const env = { ...process.env, QT_QPA_PLATFORM: 'offscreen', TESSALWICK_PROMPTS: 'console' };
  for (const [name, folder] of [['HOME', 'home'], ['XDG_CONFIG_HOME', 'config'],
    ['XDG_DATA_HOME', 'data'], ['XDG_RUNTIME_DIR', 'runtime']]) {
    env[name] = path.join(root, folder);
    fs.mkdirSync(env[name], { recursive: true, mode: 0o700 });
  }
  delete env.TESSALWICK_SITE_HOSTS;
  fs.mkdirSync(path.join(env.XDG_CONFIG_HOME, 'Tessalwick'));
  const lines = Object.entries(settings).map(([k, v]) => `TessalwickDownloadManager\\${k}=${v}`);
  fs.writeFileSync(path.join(env.XDG_CONFIG_HOME, 'Tessalwick', 'HKEY_LOCAL_MACHINE.ini'),
    `[SOFTWARE]\n${lines.join('\n')}\n`);
  return { root, env };
}

// The page every address shows: a link that opens in a new tab.
async function startServer() {
  const server = createServer((request, response) => {
    response.writeHead(200, { 'Content-Type': 'text/html' });
    response.end(`<a id="link" href="${tabLink}" target="_blank">a file</a>`);
  });
  await new Promise((done) => server.listen(0, '127.0.0.1', done));
  return server;
}

function startProgram(env) {
  const program = spawn(path.join(build, 'tessalwick'), [], { env });
  program.output = '';
  program.stdout.on('data', (bytes) => { program.output += bytes; });
  program.stderr.on('data', (bytes) => { program.output += bytes; });
  program.ended = new Promise((done) => program.on('exit', (code) => done(code)));
  return program;
}

// The rows of the saved list, "site|LinkURL".
function savedRows(env) {
  const file = path.join(env.XDG_DATA_HOME, 'Tessalwick', 'LinkList.lq');
  const lines = fs.existsSync(file) ? fs.readFileSync(file, 'latin1').split('\r\n') : [];
  const rows = [];
  for (let i = 0; i + 5 < lines.length; i += 6) rows.push(`${lines[i]}|${lines[i + 1]}`);
  return rows;
}

async function runBrowser(doNothing) {
  const { root, env } = sandbox({ DoNothing: doNothing, Flock: 'true', StartAfterCatch: '0' });
  const server = await startServer();
  const program = startProgram(env);
  let browser;
  try {
    const helper = spawnSync(path.join(build, 'TessalwickDownloadManagerHelper'),
      ['updateintegeration'], { env, encoding: 'utf8' });
    assert.equal(helper.status, 0, helper.stderr);
    // tessalwick-send answers 0 once the program has taken a text; "abc" adds nothing.
    await until('the program to take hand-overs', () =>
      spawnSync(path.join(build, 'tessalwick-send'), ['abc'], { env }).status === 0);

    browser = await puppeteer.launch({
      executablePath: chromium,
      headless: true,
      pipe: true,
      timeout: 30000,
      userDataDir: path.join(env.XDG_CONFIG_HOME, 'chromium'),
      enableExtensions: [extension],
      env,
      args: [
        ...(process.getuid?.() === 0 ? ['--no-sandbox'] : []),
        `--host-resolver-rules=MAP * 127.0.0.1:${server.address().port}, EXCLUDE 127.0.0.1`,
        '--no-first-run', '--disable-background-networking', '--disable-component-update',
        '--disable-sync', '--disable-default-apps',
      ],
    });
    const workerTarget = await browser.waitForTarget((target) =>
      target.type() === 'service_worker' && target.url().startsWith(`chrome-extension://${extensionId}/`));
    const worker = await workerTarget.worker();

    // The extension's copy of the rules, on addresses whose verdicts differ.
    const verdicts = await worker.evaluate(() => [
      'http://rapidshare.com/files/1/a.zip', 'https://RAPIDSHARE.com/files/1/a.zip',
      'http://www.hotfile.com/dl/2/b.rar', 'http://rapidshare.com/progress.html?uploadid=1',
      'http://www.youtube.com/watch?v=abc', 'http://www.youtube.com/user/abc',
      'http://rapidshare.com/', 'http://example.com/files/1/a.zip',
    ].map(globalThis.tessalwick.recognisedSite));
    assert.deepEqual(verdicts, [1, 1, 7, 0, 2, 0, 0, 0]);

    // A link opened in a new tab: the extension sees the tab and hands it over.
    const page = await browser.newPage();
    await page.goto(`http://127.0.0.1:${server.address().port}/page.html`);
    await page.click('#link');
    const tabAnswer = await until('the tab\'s hand-over', () => worker.evaluate((link) =>
      globalThis.tessalwick.handedOver.find((entry) => entry.text.endsWith(link)), tabLink));
    assert.deepEqual(tabAnswer, { text: `:KELDOVARPINE:${tabLink}`, answer: { taken: true } });

    // The context-menu entry's handler, as a click on it calls it.
    const menuAnswer = await worker.evaluate((link) => globalThis.tessalwick.onMenuClicked(
      { menuItemId: 'tessalwick-download', linkUrl: link }), menuLink);
    assert.deepEqual(menuAnswer, { taken: true });
  } finally {
    await browser?.close();
    server.close();
    program.kill('SIGTERM');
  }
  assert.equal(await program.ended, 0, program.output);
  const rows = savedRows(env);
  fs.rmSync(root, { recursive: true, force: true });
  return { rows, output: program.output };
}

test('a new tab\'s link is added with "Add to download list"', async () => {
  const { rows, output } = await runBrowser('0');
  assert.deepEqual(rows, [`1|${tabLink}`, `7|${menuLink}`]);
  assert.match(output, /balloon: \[Tessalwick\] 1 Link Added/);
});

test('a new tab\'s link is dropped with "Do Nothing"; the menu\'s is still added', async () => {
  const { rows } = await runBrowser('1');
  assert.deepEqual(rows, [`7|${menuLink}`]);
});
