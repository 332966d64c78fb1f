// A bar chart as an SVG: rows of { label, value, ours }, the longest first.
const width = 760;
const left = 290;
const step = 30;

const escape = (text) => text.replace(/&/g, '&amp;').replace(/</g, '&lt;');

export function chart(title, note, rows, text) {
  const sorted = [...rows].sort((a, b) => b.value - a.value);
  const scale = (width - left - 90) / sorted[0].value;
  const height = 62 + step * sorted.length + 30;
  const bars = sorted.map(({ label, value, ours }, at) => {
    const y = 58 + step * at;
    const length = Math.max(value * scale, 1).toFixed(1);
    return `  <text x="${left - 10}" y="${y + 15}" text-anchor="end">${escape(label)}</text>
  <rect x="${left}" y="${y}" width="${length}" height="20" rx="2" fill="${ours ? '#2f6fb3' : '#a8b0b8'}"/>
  <text x="${(left + Number(length) + 8).toFixed(1)}" y="${y + 15}">${escape(text(value))}</text>`;
  });
  return `<svg xmlns="http://www.w3.org/2000/svg" viewBox="0 0 ${width} ${height}" width="${width}" height="${height}"
  font-family="system-ui, sans-serif" font-size="14" fill="#222" role="img">
  <title>${escape(title)}</title>
  <rect width="100%" height="100%" rx="6" fill="#fff"/>
  <text x="20" y="32" font-size="17" font-weight="bold">${escape(title)}</text>
${bars.join('\n')}
  <text x="20" y="${height - 14}" font-size="12" fill="#666">${escape(note)}</text>
</svg>
`;
}
