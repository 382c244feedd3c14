'use strict'
const fs = require('node:fs')
const { join, parse: parsePath } = require('path')
import def, { a as b } from './x.js'

/** Limit of all. */
export const LIMIT = 3
let counter = 0

/**
 * Greets.
 * @param {string} name who
 */
export default function greet (name) {
  const inner = () => fs.readFileSync(name)
  return inner() + new Date()
}

export const arrow = async ({ a = 1, b }, ...rest) => {
  await join(a, b)
}

class Base {}

@decorated
export class Widget extends Base {
  static count = 0
  #secret = 1
  // Makes one.
  constructor (options) { super(options) }
  get size () { return this.measure() }
  handler = (event) => event
  #hidden () {}
  async * walk () {}
}

function Reply () {}
Reply.prototype.send = function (payload) { return payload }
Object.defineProperties(Reply.prototype, { sent: { get () { return 1 } } })

const broken = (

function after () {}
module.exports = { after, Reply }
module.exports.direct = function () {}
describe('x', () => { const local = 1; function helper () {} })
export { counter }
