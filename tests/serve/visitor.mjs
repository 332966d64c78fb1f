// A visitor of an example without a browser: keeps cookies and reads the page.
export class Visitor {
  constructor(address) {
    this.address = address;
    this.cookies = new Map();
  }

  async request(target, form) {
    const headers = {};
    if (this.cookies.size > 0) headers.cookie = [...this.cookies].map(([name, value]) => `${name}=${value}`).join('; ');
    const response = await fetch(new URL(target, this.address), {
      method: form ? 'POST' : 'GET',
      body: form instanceof FormData ? form : form && new URLSearchParams(form),
      headers,
      redirect: 'manual',
    });
    for (const [name, value] of response.headers) {
      if (name !== 'set-cookie') continue;
      const [, key, content] = value.match(/^([^=]+)=([^;]*)/);
      this.cookies.set(key, content);
    }
    this.status = response.status;
    this.headers = response.headers;
    this.bytes = Buffer.from(await response.arrayBuffer());
    this.page = this.bytes.toString();
    return this.page;
  }

  // The field that carries the next command.
  get commandField() {
    return this.page.match(/<button name="([A-Z0-9]+)" value="Save">/)?.[1];
  }

  // [{ id, name, text }] as the page shows them.
  get entries() {
    const pattern = /<article class="card" id="entry-(\d+)">\s*<h3>(.*?)<\/h3>[^]*?<p>([^]*?)<\/p>/g;
    return [...this.page.matchAll(pattern)].map(([, id, name, text]) => ({ id, name, text }));
  }

  get notice() {
    return this.page.match(/role="status">(.*?)<\/p>/)?.[1];
  }

  open() {
    return this.request('default.asp');
  }

  command(name, fields) {
    return this.request('default.asp', { ...fields, [this.commandField]: name });
  }
}
