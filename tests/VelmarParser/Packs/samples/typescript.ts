import type {Shape, Point as P} from "./shapes";
import fs = require("fs");
export abstract class Circle<T extends object = {}> extends geo.Round<T> implements Shape, Named {
  private static readonly kinds: Record<string, number> = {};
  declare protected name?: string;
  constructor(public radius: number, protected override readonly label = "x") { super(); }
  abstract area(this: Circle<T>, scale?: number): asserts scale is number;
  get size(): P[] { return <any>this.radius!; }
  @logged({level: 1}) public run = async <K,>(...keys: K[]): Promise<void> => {};
}
interface Named { readonly name: string; call(a: string): unique symbol; [key: string]: unknown; new (x: Date): Named; on: () => void }
type Key<T> = { -readonly [K in keyof T as `get${K}`]?: T[K] extends (infer U)[] ? U : never } & (A | null);
declare module "x" { export function find(id: bigint): typeof fs | undefined; }
namespace Geometry.Flat { export const enum Side { Left = 1, Right = Left << 1 } }
declare global { var SETTING: boolean; }
function isText(value: unknown): value is string { return typeof value === "string"; }
const table = {a: 1} as const satisfies Record<string, number>, n = table.a as number;
let tuple: [first: string, rest?: ...number[]] = ["a"], f: (x: Node.Child) => this;
@Component export class View { accessor value = 1; }
