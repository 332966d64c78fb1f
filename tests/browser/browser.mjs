// Headless Chromium over the WebDriver protocol.
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { mkdtemp, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { createInterface } from 'node:readline';
import { setTimeout as delay } from 'node:timers/promises';

const elementKey = 'element-6066-11e4-a52e-4f735466cecf';

async function startDriver() {
  // In a locale without UTF-8, as on a machine where none is set, the driver finds no file named in other letters.
  const env = { ...process.env, LC_ALL: 'C.UTF-8' };
  const driver = spawn('chromedriver', ['--port=0'], { stdio: ['ignore', 'pipe', 'ignore'], env });
  const port = await new Promise((resolve, reject) => {
    createInterface({ input: driver.stdout }).on('line', (line) => {
      const found = line.match(/started successfully on port (\d+)/);
      if (found) resolve(found[1]);
    });
    driver.once('error', reject);
    driver.once('exit', () => reject(new Error('chromedriver ended')));
  });
  return { driver, address: `http://127.0.0.1:${port}` };
}

// The first element that a CSS selector finds.
class Element {
  constructor(browser, id) {
    this.browser = browser;
    this.path = `element/${id}`;
  }
  click() { return this.browser.post(`${this.path}/click`, {}); }
  type(text) { return this.browser.post(`${this.path}/value`, { text }); }
  clear() { return this.browser.post(`${this.path}/clear`, {}); }
  text() { return this.browser.call('GET', `${this.path}/text`); }
  attribute(name) { return this.browser.call('GET', `${this.path}/attribute/${name}`); }
  value() { return this.browser.call('GET', `${this.path}/property/value`); }
}

export class Browser {
  static async start({ cookies = true } = {}) {
    const browser = new Browser();
    browser.profile = await mkdtemp(join(tmpdir(), 'browser-'));
    Object.assign(browser, await startDriver());
    const options = {
      args: [
        '--headless=new', '--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run',
        '--disable-background-networking', '--disable-component-update', '--disable-sync',
        '--disable-dev-shm-usage', '--window-size=1000,900', `--user-data-dir=${browser.profile}`,
      ],
      prefs: { 'profile.default_content_setting_values.cookies': cookies ? 1 : 2 },
    };
    const capabilities = { alwaysMatch: { browserName: 'chrome', 'goog:chromeOptions': options } };
    const { sessionId } = await browser.send('POST', '/session', { capabilities });
    browser.session = `/session/${sessionId}`;
    return browser;
  }

  async send(method, path, body) {
    const response = await fetch(this.address + path, { method, body: body && JSON.stringify(body) });
    const { value } = await response.json();
    if (value?.error) throw new Error(`${value.error}: ${value.message}`);
    return value;
  }

  call(method, path, body) { return this.send(method, `${this.session}/${path}`, body); }
  post(path, body) { return this.call('POST', path, body); }

  open(url) { return this.post('url', { url }); }
  back() { return this.post('back', {}); }
  reload() { return this.post('refresh', {}); }
  title() { return this.call('GET', 'title'); }
  run(script, ...args) { return this.post('execute/sync', { script, args }); }
  async screenshot() { return Buffer.from(await this.call('GET', 'screenshot'), 'base64'); }

  // The page in a window of that size, as small a file as looks well.
  async picture({ width, height }) {
    const cdp = (cmd, params) => this.post('goog/cdp/execute', { cmd, params });
    await cdp('Emulation.setDeviceMetricsOverride', { width, height, deviceScaleFactor: 1, mobile: false });
    const { data } = await cdp('Page.captureScreenshot', { format: 'webp', quality: 80 });
    return Buffer.from(data, 'base64');
  }

  async find(selector) {
    const found = await this.post('element', { using: 'css selector', value: selector });
    return new Element(this, found[elementKey]);
  }
  async findAll(selector) {
    const found = await this.post('elements', { using: 'css selector', value: selector });
    return found.map((one) => new Element(this, one[elementKey]));
  }
  // As find, once there is such an element.
  async wait(selector) {
    await this.post('timeouts', { implicit: 60_000 });
    try {
      return await this.find(selector);
    } finally {
      await this.post('timeouts', { implicit: 0 });
    }
  }
  async textsOf(selector) { return Promise.all((await this.findAll(selector)).map((one) => one.text())); }
  async textOf(selector) { return (await this.find(selector)).text(); }
  async click(selector) { return (await this.find(selector)).click(); }
  // Clicks on what leads to another page, and waits for that page.
  async follow(selector) {
    await this.run('document.documentElement.dataset.left = 1');
    await this.click(selector);
    const arrived = 'return document.readyState == "complete" && !document.documentElement.dataset.left';
    while (!(await this.run(arrived))) await delay(20);
  }
  async fill(selector, text) {
    const field = await this.find(selector);
    await field.clear();
    await field.type(text);
  }

  async quit() {
    await this.send('DELETE', this.session);
    const ended = once(this.driver, 'exit');
    this.driver.kill();
    await ended;
    await rm(this.profile, { recursive: true, force: true, maxRetries: 10, retryDelay: 100 });
  }
}
