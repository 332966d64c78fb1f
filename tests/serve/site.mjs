// Starts the host on a copy of a site, and stops it as an operator does.
import { spawn } from 'node:child_process';
import { once } from 'node:events';
import { cp, mkdtemp, rm } from 'node:fs/promises';
import { tmpdir } from 'node:os';
import { join, resolve } from 'node:path';
import { createInterface } from 'node:readline';

const host = process.env.ZELTO;
const examples = process.env.EXAMPLES;

// `example` is one of the examples, or the absolute path of a site of a test.
// The site's address, what the host has logged, says() and logs(), which wait for a line of its output and its log,
// and stop(), which answers its exit code or the signal that ended it.
export const serve = (example, ...options) => serveUnder([], example, ...options);

// The same, started by another command: ['prlimit', '--nofile=100'].
export async function serveUnder(command, example, ...options) {
  const folder = await mkdtemp(join(tmpdir(), 'site-'));
  await cp(resolve(examples, example), folder, { recursive: true });
  const [first, ...words] = [...command, host, 'serve', folder, '--listen', '127.0.0.1:0', ...options];
  const program = spawn(first, words, {
    stdio: ['ignore', 'pipe', 'pipe'],
  });
  const exited = once(program, 'close');  // with everything that it has said
  // A test that is ended takes its host along.
  const end = () => program.kill('SIGKILL');
  process.once('exit', end);
  const leave = () => process.exit(1);
  process.once('SIGTERM', leave);
  const log = [];
  // Gathers the stream's lines; what waits for one that matches, among those gathered as well.
  const gather = (stream, lines) => {
    const input = createInterface({ input: stream });
    input.on('line', (line) => lines.push(line));
    return (pattern) => new Promise((resolve, reject) => {
      const look = () => {
        const found = lines.find((line) => pattern.test(line));
        if (found) resolve(found);
      };
      input.on('line', look);
      look();
      program.once('error', reject);
      program.once('exit', () => reject(new Error('the host ended: ' + log.join('\n'))));
    });
  };
  const logs = gather(program.stderr, log);
  const says = gather(program.stdout, []);
  const address = (await says(/^Serving/)).match(/http:\/\/\S+/)[0];
  const stop = async (by = 'SIGTERM') => {
    program.kill(by);
    const [code, signal] = await exited;
    process.off('exit', end);
    process.off('SIGTERM', leave);
    await rm(folder, { recursive: true });
    return signal ?? code;
  };
  return { address, folder, log, logs, pid: program.pid, says, stop };
}
