import def, { a as b, type C } from './x'
import * as ns from 'y'
import './side'
export { a, b as bb } from './z'
export type Opts<T> = { a: T } | Other
/** Doc I. */
export interface Foo<T> extends Bar<T>, Baz {
  /** the x */
  x: string
  m(a: number): Promise<Foo<T>>
}
export default function main(): void {}
export function over(a: string): string
export function over(a: number): number
export function over(a: any) { return a }
/**
 * Adds.
 * @param a first
 */
export const add = async (a: number, b = 2): Promise<number> => a + b
const local = 3, other = 4
export const enum Dir { Up, Down = 2 }
@Injectable({ x: 1 })
export abstract class Svc extends Base<Foo> implements IFoo, ns.IBar {
  private readonly x: number = 1
  static y = 2
  constructor(private http: Http) { super() }
  @Input() get value(): string { return '' }
  abstract foo(): void
  async run<T extends Foo>(a: T): Promise<void> { await this.http.get<Foo>('x'); new Thing() }
  handler = (e: Event) => { go() }
  #priv() {}
}
declare module 'foo' { interface X { a: string } }
namespace N { export const q = 1; export function f() {} }
export = N
describe('x', () => { const z = 1; function helper() {} })
export const config = { name: 'a', setup() { }, run: () => 1 }
export { local }
declare global { interface Window { foo: string } }
export declare function dd(a: string): void;
export async function transform(code: string): Promise<{
  code: string // of the module
  map?:
    | string
    | null
  "a b": number[]
  [key: string]: unknown
} | undefined> { return undefined }
