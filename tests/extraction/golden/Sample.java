/* Licensed under x */
package com.acme.x;
import java.util.List;
import static a.b.C.d;
import foo.*;
/** Class doc.
 * @param <T> t
 */
@Deprecated
public class T<X extends Foo> extends Base<X> implements A, B<C> {
  /** const */
  public static final int MAX = 1;
  private final List<String> names = new ArrayList<>();
  protected int p;
  public T(int a) { super(a); }
  /** Get it. */
  @Override public String get(final String a,
      int... b) throws IOException { helper.call(a); return this.x(); }
  private void priv() {}
  void pkg() { Runnable r = () -> { int z = 1; }; foo(Bar::baz); }
  static class Inner { public void m() {} }
  interface I { void a(); default void b() {} int K = 1; }
  enum E { ONE(1), TWO { void q() {} }; E(int x) {} }
  @interface Ann { String value() default ""; }
  record R(int a, String b) { R { } }
}
