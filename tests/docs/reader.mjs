// Whoever follows a document in a browser: does what the left cell of its tables says, and sees what the right one does.
import assert from 'node:assert/strict';
import { File } from 'node:buffer';
import { Visitor } from '../serve/visitor.mjs';

const decoded = (html) => html.replaceAll('&lt;', '<').replaceAll('&gt;', '>').replaceAll('&quot;', '"').replaceAll('&amp;', '&');
const shownText = (html) => decoded(html.replace(/<head>[^]*?<\/head>/, (head) => head.match(/<title>.*<\/title>/)?.[0] ?? '')
  .replace(/<[^>]*>/g, '\n'));
const attribute = (tag, name) => decoded(tag.match(new RegExp(` ${name}="([^"]*)"`))?.[1] ?? '');

export class Reader extends Visitor {
  constructor(picture) {
    super();
    this.picture = picture;
    this.written = {};  // by the type of the field
  }

  async act(text) {
    const [, what, value, beside] = text.match(/^(open (?=http)|write |choose a |press )`?(.*?)`?(?: beside `(.*)`)?$/) ?? [];
    assert.ok(what, `nobody knows how to do "${text}"`);
    if (what === 'open ') {
      const { pathname, search } = new URL(value);
      await this.request(pathname + search.replace('NAME', () => this.page.match(/<button[^>]* name="([A-Z0-9]+)"/)[1]));
    } else if (what === 'press ') await this.press(value, beside);
    else if (what === 'write ') this.written.text = value;
    else this.written.file = { picture: this.picture, text: 'Some text.' }[value];
  }

  // The form with this button, as a browser sends it.
  async press(label, beside = '') {
    const forms = [...this.page.matchAll(/<form[^>]*>[^]*?<\/form>/g)].map(([form]) => form);
    for (const form of forms.filter((one) => shownText(one).includes(beside))) {
      for (const [, tag, shown] of form.matchAll(/(<button[^>]*>)(.*?)<\/button>/g)) {
        if (shown !== label && attribute(tag, 'value') !== label) continue;
        const fields = [...form.matchAll(/<input[^>]*>/g)].map(([input]) => [attribute(input, 'name'), this.valueOf(input)]);
        this.written = {};
        const all = [...fields, [attribute(tag, 'name'), attribute(tag, 'value')]];
        const [open] = form.match(/<form[^>]*>/);
        const isMultipart = attribute(open, 'enctype') === 'multipart/form-data';
        const body = isMultipart ? new FormData() : Object.fromEntries(all.filter(([, value]) => typeof value === 'string'));
        if (isMultipart) for (const [name, value] of all) body.append(name, value, ...value.name ? [value.name] : []);
        return this.request(attribute(open, 'action'), body);
      }
    }
    return assert.fail(`there is no button "${label}" in ${this.page}`);
  }

  valueOf(input) {
    const type = attribute(input, 'type') || 'text';
    if (type === 'hidden') return attribute(input, 'value');
    if (type !== 'file') return this.written.text ?? '';
    return this.written.file ? new File([this.written.file], 'a.png') : new File([], '');
  }

  async assertSees(sight) {
    const text = shownText(this.page);
    const [, no, first, relation, second] = sight.match(/^(no )?`([^`]+)`(?: (above|struck through)(?: `([^`]+)`)?)?$/) ?? [];
    const said = `"${sight}" in ${text.replace(/\n+/g, '\n')}`;
    if (sight === 'a picture' || sight === 'no picture') return this.assertPicture(sight);
    assert.ok(first, `nobody knows how to see "${sight}"`);
    assert.equal(text.includes(first), !no, said);
    if (relation === 'above') assert.ok(text.includes(second) && text.indexOf(first) < text.indexOf(second), said);
    if (relation !== 'struck through') return undefined;
    const item = this.page.match(/<li class="\w+">[^]*?<\/li>/g).find((one) => shownText(one).includes(first));
    const style = await (await fetch(new URL('style.css', this.address))).text();
    return assert.ok(/^<li class="done">/.test(item) && /^\.done span \{.*line-through/m.test(style), said);
  }

  async assertPicture(sight) {
    const images = [...this.page.matchAll(/<img[^>]*>/g)].map(([image]) => attribute(image, 'src'));
    assert.equal(images.length > 0, sight === 'a picture', this.page);
    const shown = this.page;
    for (const image of images) {
      await this.request(image);
      assert.deepEqual(this.bytes, this.picture);
    }
    this.page = shown;
  }
}
