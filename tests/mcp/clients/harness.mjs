// Servers over repositories of the tests' own, and clients whose every message is checked.
import assert from 'node:assert/strict';
import { spawn } from 'node:child_process';
import { mkdirSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { dirname, join } from 'node:path';
import { createInterface } from 'node:readline';
import * as schemas from '@modelcontextprotocol/core';

export const PROGRAM = process.env.TARNWICK_PROGRAM;

const CART = `"""Shopping carts."""

class Cart:
    """Holds what a customer wants to buy."""

    def add_item(self, product, count=1):
        """Puts a product into the cart.

        Args:
            product: what to buy
        """
        self.items[product] = count


def checkout_cart(cart):
    """Sums up the prices of a cart."""
    cart.add_item("bag")
    return 0
`;

export const FILES = {
  'pyproject.toml': '[project]\nname = "shop"\n',
  'shop/__init__.py': '',
  'shop/cart.py': CART,
  'tests/test_cart.py': 'from shop.cart import Cart, checkout_cart\n\n\ndef test_cart():\n    assert checkout_cart(Cart()) == 0\n',
};

/// A folder with repositories and a cache of its own, removed when the test `t` ends.
export class Place {
  constructor(t) {
    this.folder = mkdtempSync(join(tmpdir(), 'tarnwick-mcp-'));
    this.closers = [];  // of the clients, which go first
    t.after(async () => {
      for (const close of this.closers) await close();
      rmSync(this.folder, { recursive: true, force: true });
    });
    this.env = { ...process.env, XDG_CACHE_HOME: join(this.folder, 'cache'), TARNWICK_INDEX: undefined };
  }

  path(...parts) {
    return join(this.folder, ...parts);
  }

  write(path, text) {
    mkdirSync(dirname(this.path(path)), { recursive: true });
    writeFileSync(this.path(path), text);
  }

  repository(name, files = FILES) {
    for (const [path, text] of Object.entries(files)) this.write(`${name}/${path}`, text);
    return this.path(name);
  }

  /// What starts a server; `more` are further words of the command line.
  server(names, ...more) {
    const repos = names.flatMap((name) => ['--repo', this.path(name)]);
    return { command: PROGRAM, args: ['mcp', ...repos, ...more], env: this.env, stderr: 'inherit' };
  }
}

const RESULTS = {
  initialize: schemas.InitializeResultSchema,
  ping: schemas.EmptyResultSchema,
  'server/discover': schemas.DiscoverResultSchema,
  'tools/list': schemas.ListToolsResultSchema,
  'tools/call': schemas.CallToolResultSchema,
  'subscriptions/listen': schemas.SubscriptionsListenResultSchema,
};
const NOTIFICATIONS = {
  'notifications/progress': schemas.ProgressNotificationSchema,
  'notifications/subscriptions/acknowledged': schemas.SubscriptionsAcknowledgedNotificationSchema,
};

/// Checks what a server sends against the published schemas.
export class Checker {
  methods = new Map();

  sent(message) {
    if (message.id !== undefined && message.method) this.methods.set(message.id, message.method);
  }

  received(message) {
    schemas.JSONRPCMessageSchema.parse(message);
    if (message.method) NOTIFICATIONS[message.method].parse(message);
    if (message.result) RESULTS[this.methods.get(message.id)].parse(message.result);
    if (message.error) schemas.JSONRPCErrorResponseSchema.parse(message);
  }
}

/// `transport` with a checker on both of its directions; `faults` collects what was wrong.
export function checked(transport) {
  const checker = new Checker();
  const faults = [];
  let handler;
  Object.defineProperty(transport, 'onmessage', {
    get: () => handler && ((message, extra) => {
      try {
        checker.received(message);
      } catch (error) {
        faults.push(error);
      }
      handler(message, extra);
    }),
    set: (value) => { handler = value; },
  });
  const send = transport.send.bind(transport);
  transport.send = (message, options) => {
    checker.sent(message);
    return send(message, options);
  };
  transport.faults = faults;
  return transport;
}

/// A client that says lines.
export class RawClient {
  heard = [];
  #waiting = [];

  constructor({ command, args, env }) {
    this.process = spawn(command, args, { env, stdio: ['pipe', 'pipe', 'inherit'] });
    this.process.stdin.on('error', () => {});
    this.exited = new Promise((resolve) => this.process.on('exit', (code, signal) => resolve(signal ?? code)));
    createInterface({ input: this.process.stdout }).on('line', (line) => {
      this.heard.push(JSON.parse(line));
      for (const look of this.#waiting) look();
    });
  }

  say(message) {
    const raw = typeof message === 'string' || Buffer.isBuffer(message);
    this.process.stdin.write(raw ? message : `${JSON.stringify(message)}\n`);
  }

  /// The first message heard, or to be heard, that `fits`.
  hear(fits) {
    return new Promise((resolve) => {
      const look = () => {
        const found = this.heard.find(fits);
        if (!found) return;
        this.#waiting = this.#waiting.filter((other) => other !== look);
        resolve(found);
      };
      this.#waiting.push(look);
      look();
    });
  }

  request(id, method, params = {}) {
    this.say({ jsonrpc: '2.0', id, method, params });
    return this.hear((message) => message.id === id);
  }

  initialize(version = '2025-11-25') {
    const clientInfo = { name: 'raw', version: '1' };
    return this.request('init', 'initialize', { protocolVersion: version, capabilities: {}, clientInfo });
  }

  /// Ends the input; answers how the server ended.
  end() {
    this.process.stdin.end();
    return this.exited;
  }
}

export const call = (args, meta) => ({ name: 'context', arguments: args, ...(meta && { _meta: meta }) });

/// The data of a result, which must be a success.
export function data(result) {
  assert.ok(!result.isError, result.content[0].text);
  return JSON.parse(result.content[0].text);
}

export const names = (pack) => pack.symbols.map((symbol) => symbol.fqn);

/// Asks again until the first indexing is over.
export async function indexed(client, args = { action: 'status' }) {
  for (;;) {
    const answer = data(await client.callTool(call(args)));
    if (!answer.repositories.some((repository) => repository.indexing_in_progress)) return answer;
    await new Promise((resolve) => setTimeout(resolve, 20));
  }
}
