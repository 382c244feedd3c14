//! Crate doc.
use std::{fmt, io::{self, Read as R}};
use crate::a::B;
mod other;

/// A doc.
///
/// More.
#[derive(Debug, Clone)]
#[doc = "attr doc"]
pub struct Foo<T: Clone> {
    /// the x
    pub x: T,
    y: Vec<Bar>,
}
pub(crate) enum E { A, /// bee
 B(i32), C { z: u8 } }
impl<T> Foo<T> where T: Clone {
    /// News.
    pub fn new(x: T) -> Self { Foo { x, y: vec![] } }
    fn private(&self) { self.x.clone(); io::stdin().lock::<u8>(); }
}
impl<T> fmt::Display for Foo<T> { fn fmt(&self, f: &mut fmt::Formatter<'_>) -> fmt::Result { write!(f, "x") } }
pub trait Tr: Send + Other { const N: usize = 1; type Out; fn req(&self); fn prov(&self) -> u8 { 1 } }
#[macro_export]
macro_rules! mac { ($a:expr) => { $a } }
pub const LIMIT: usize = 3;
static mut S: u8 = 1;
pub mod inner { pub fn f() {} mod deep { pub fn g() {} } }
#[cfg(test)]
mod tests { use super::*; #[test] fn t() { assert_eq!(1, 1); } }
pub async unsafe fn z<'a>(a: &'a str) -> impl Future<Output = ()> + 'a {}
fn broken( { }
fn after() {}
