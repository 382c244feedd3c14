// The server as a process: files that change, hostile input, ends of all kinds.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { existsSync, renameSync, rmSync, symlinkSync } from 'node:fs';
import { once } from 'node:events';
import test from 'node:test';
import { Checker, Place, PROGRAM, RawClient, call, data, indexed, names } from './harness.mjs';

const START_A_SERVER = `
  const { spawn } = require('node:child_process');
  const [command, ...args] = process.argv.slice(1);
  console.log(spawn(command, args, { stdio: ['pipe', 'pipe', 'ignore'] }).pid);
  setInterval(() => {}, 1000);`;

/// A raw client past its handshake and the first indexing, with the one operation of the official clients.
async function start(place, ...more) {
  const client = new RawClient(place.server(['shop'], ...more));
  place.closers.push(() => client.process.kill('SIGKILL'));
  let id = 0;
  client.callTool = async (params) => (await client.request(++id, 'tools/call', params)).result;
  await client.initialize();
  await indexed(client);
  return client;
}

test('a pack shows every edit made before it', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  const client = await start(place);
  // A call waits for an update only so long; on a busy machine the pack then says that more is to come.
  const found = async (name) => {
    for (;;) {
      const pack = data(await client.callTool(call({ action: 'task', task: name })));
      if (!pack.indexing_in_progress) return names(pack).filter((fqn) => fqn.endsWith(`.${name}`));
    }
  };
  const define = (name) => `def ${name}():\n    return 1\n`;
  for (let i = 0; i < 10; ++i) {
    place.write('shop/shop/edited.py', define(`edit_number_${i}x`));
    assert.equal((await found(`edit_number_${i}x`)).length, 1, `edit ${i}`);
  }
  assert.deepEqual(await found('edit_number_3x'), []);
  place.write('shop/new/deep/fresh.py', define('fresh_function'));
  assert.equal((await found('fresh_function')).length, 1, 'a file in new directories');
  place.write('shop/new/deep/fresh.py', define('fresher_function'));
  assert.equal((await found('fresher_function')).length, 1, 'an edit in new directories');
  renameSync(place.path('shop/new'), place.path('shop/moved'));
  assert.match((await found('fresher_function'))[0], /moved/);
  place.write('shop/moved/deep/fresh.py', define('freshest_function'));
  assert.equal((await found('freshest_function')).length, 1, 'an edit in moved directories');
  rmSync(place.path('shop/moved'), { recursive: true });
  assert.deepEqual(await found('freshest_function'), []);
  rmSync(place.path('cache'), { recursive: true });
  await indexed(client);
  assert.equal((await found('checkout_cart')).length, 1, 'an index that was removed is made anew');
  assert.equal(await client.end(), 0);
});

test('the index lies where it is told to', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  const [option, variable] = [place.path('option.db'), place.path('variable.db')];
  await start(place, '--index', option);
  place.env.TARNWICK_INDEX = variable;
  await start(place);
  assert.deepEqual([option, variable, place.path('cache')].map(existsSync), [true, true, false]);
});

test('nothing outside of the repository is read', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  place.write('outside/secret.py', 'class Cart:\n    SECRET_VALUE = 1\n');
  symlinkSync(place.path('outside'), place.path('shop/linked'));
  const client = await start(place);
  const task = { action: 'task', task: 'SECRET_VALUE Cart', snippets: true, budget: 8000 };
  assert.doesNotMatch(JSON.stringify(await client.callTool(call(task))), /SECRET_VALUE =/);
  renameSync(place.path('shop/shop'), place.path('aside'));
  symlinkSync(place.path('outside'), place.path('shop/shop'));
  place.write('outside/cart.py', 'class Cart:\n    SECRET_VALUE = 1\n');
  assert.doesNotMatch(JSON.stringify(await client.callTool(call(task))), /SECRET_VALUE =/);
});

test('hostile input costs one answer each and nothing else', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  const client = await start(place);
  client.heard.length = 0;
  client.say('x'.repeat(10 << 20) + '\n');
  client.say(Buffer.from([0xff, 0xfe, 0x00, 0x0a]));
  client.say('{"jsonrpc":"2.0","id":{},"method":"ping"}\n\n\r\n');
  client.say(`{"jsonrpc":"2.0","id":1,"method":"ping","params":${'[{"a":'.repeat(5000)}\n`);
  const long = (await client.request('long', 'tools/call', call({ action: 'task', task: 'y'.repeat(500000) }))).result;
  assert.equal(long.isError, true);
  assert.deepEqual((await client.request('after', 'ping')).result, {});
  assert.deepEqual(client.heard.map((message) => message.error?.code), [-32600, -32700, -32600, -32700, undefined, undefined]);
  const checker = new Checker();
  checker.methods = new Map([['long', 'tools/call'], ['after', 'ping']]);
  for (const message of client.heard) checker.received(message);
  assert.equal(await client.end(), 0);
});

test('the server ends with its input, whatever it is at', async (t) => {
  const place = new Place(t);
  const many = Object.fromEntries(Array.from({ length: 300 }, (_, i) => [`m${i}.py`, `def f${i}():\n    return ${i}\n`]));
  place.repository('large', many);
  for (const said of ['', '{"jsonrpc":"2.0","id":1,"met', '{"jsonrpc":"2.0","id":1,"method":"ping"}\n', '{"jsonrpc":"2.0","id":1,"method":"ping"}']) {
    const client = new RawClient(place.server(['large']));
    client.say(said);
    assert.equal(await client.end(), 0, JSON.stringify(said));
    assert.equal(client.heard.length, said === '' ? 0 : 1);
  }
});

test('the server ends when its client is killed', async (t) => {
  const place = new Place(t);
  place.repository('shop');
  const { command, args, env } = place.server(['shop']);
  const parent = spawn(process.execPath, ['-e', START_A_SERVER, command, ...args], { env, stdio: ['ignore', 'pipe', 'inherit'] });
  const [line] = await once(parent.stdout, 'data');
  const server = Number(line);
  process.kill(server, 0);
  parent.kill('SIGKILL');
  for (const start = Date.now(); ; await new Promise((resolve) => setTimeout(resolve, 20))) {
    try {
      process.kill(server, 0);
    } catch {
      break;
    }
    assert.ok(Date.now() - start < 10000, 'the server is still there');
  }
});

test('the help prints a configuration that starts the server', async (t) => {
  const place = new Place(t);
  const { stdout } = spawn(PROGRAM, ['mcp', '--help'], { cwd: place.repository('shop'), env: place.env });
  let help = '';
  for await (const part of stdout) help += part;
  const { mcpServers: { tarnwick } } = JSON.parse(help.match(/^\{[^]*?^\}/m)[0]);
  const client = new RawClient({ ...tarnwick, env: place.env });
  assert.equal((await client.initialize()).result.serverInfo.name, 'tarnwick');
  assert.deepEqual(tarnwick.args.slice(0, 2), ['mcp', '--repo']);
  assert.equal(await client.end(), 0);
});
